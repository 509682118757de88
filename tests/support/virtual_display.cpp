#include "support/virtual_display.h"

#include <cstdlib>
#include <stdexcept>

namespace quillorbit::test {

VirtualDisplay::VirtualDisplay(const TemporaryFolder& folder) : m_folder(folder) {
  StartServer();
  // A window that comes while the window manager is starting is never shown.
  const auto started = folder / "started";
  m_windowManager = std::make_unique<ChildProcess>(
      folder, "openbox", std::vector<std::string>{"--startup", "touch " + started.string()});
  if (!Eventually([&] { return std::filesystem::exists(started); }))
    throw std::runtime_error("openbox does not start");
}

void VirtualDisplay::KillServer() {
  m_windowManager.reset();
  m_server.reset();
}

void VirtualDisplay::StartServer() {
  const auto number = m_folder / "display";
  std::filesystem::remove(number);
  m_server = std::make_unique<ChildProcess>(
      m_folder, "sh",
      std::vector<std::string>{
          "-c", "exec Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>" + number.string()});
  if (!Eventually([&] { return ReadFile(number).ends_with('\n'); }))
    throw std::runtime_error("Xvfb does not start");
  const std::string sNumber = ReadFile(number);
  setenv("DISPLAY", (":" + sNumber.substr(0, sNumber.size() - 1)).c_str(), 1);
}

}  // namespace quillorbit::test
