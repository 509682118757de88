#pragma once

#include <chrono>

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::tools {

using Clock = std::chrono::steady_clock;  // CLOCK_MONOTONIC

/// SIGINT and SIGTERM request an orderly end. While this exists they do not end the process: they
/// end a wait, and stay pending until Forget.
class StopSignal {
 public:
  StopSignal();

  [[nodiscard]] bool Received() const;

  /// Clears the stop, so that the next wait lasts until another one is requested.
  void Forget();

  /// Waits until the descriptor has one of the poll events (or an error), a stop is requested, or
  /// the deadline has come; true when the descriptor is ready. Without a descriptor (-1) only the
  /// other two end it.
  bool WaitFor(int fd, short events, Clock::time_point deadline = Clock::time_point::max()) const;

 private:
  linux_adapter::FileDescriptor m_signals;
};

}  // namespace quillorbit::tools
