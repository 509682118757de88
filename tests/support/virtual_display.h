#pragma once

#include <memory>

#include "support/child_process.h"

namespace quillorbit::test {

/// An X server without a screen, with a window manager, which DISPLAY names from then on.
class VirtualDisplay {
 public:
  /// Throws std::runtime_error when either does not start.
  explicit VirtualDisplay(const TemporaryFolder& folder);

  void KillServer();
  void StartServer();

 private:
  const TemporaryFolder& m_folder;
  std::unique_ptr<ChildProcess> m_server;
  std::unique_ptr<ChildProcess> m_windowManager;
};

}  // namespace quillorbit::test
