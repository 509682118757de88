#pragma once

#include <chrono>

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::tools {

using Clock = std::chrono::steady_clock;  // CLOCK_MONOTONIC

/// SIGINT and SIGTERM ask for an orderly end. While this lives they interrupt nothing; they end a
/// wait, and stay to be seen until they are forgotten.
class StopSignal {
 public:
  StopSignal();

  [[nodiscard]] bool Received() const;

  /// Lets the next wait last until another stop is asked for.
  void Forget();

  /// Waits until the descriptor has one of the poll events (or an error), a stop is asked for, or
  /// the deadline has come; true when the descriptor is ready. Without a descriptor (-1) only the
  /// other two end it.
  bool WaitFor(int fd, short events, Clock::time_point deadline = Clock::time_point::max()) const;

 private:
  linux_adapter::FileDescriptor m_signals;
};

}  // namespace quillorbit::tools
