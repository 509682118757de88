#pragma once

#include <csignal>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "support/child_process.h"

namespace quillorbit::test {

/// An X server without a screen, with a window manager. DISPLAY names it from then on.
class VirtualDisplay {
 public:
  explicit VirtualDisplay(const TemporaryFolder& folder)
      : m_server(folder, "sh",
                 {"-c", "exec Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>" +
                            (folder / "display").string()}) {
    std::string sNumber;
    const auto bServes =
        Eventually([&] { return (sNumber = ReadFile(folder / "display")).ends_with('\n'); });
    sNumber = ":" + sNumber.substr(0, sNumber.find('\n'));
    setenv("DISPLAY", sNumber.c_str(), 1);
    // A window that comes while the window manager is starting would never be shown.
    const std::string sStarted = folder / "started";
    m_windowManager.emplace(folder, "openbox",
                            std::vector<std::string>{"--startup", "touch " + sStarted});
    if (!bServes || !Eventually([&] { return std::filesystem::exists(sStarted); }))
      throw std::runtime_error("Xvfb or openbox does not start");
  }

  /// As after a crash of the X server.
  void Kill() { m_server.Signal(SIGKILL); }

 private:
  ChildProcess m_server;
  std::optional<ChildProcess> m_windowManager;
};

}  // namespace quillorbit::test
