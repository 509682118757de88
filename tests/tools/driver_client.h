#pragma once

#include <cerrno>
#include <filesystem>
#include <string_view>

#include "joystick/JoystickReport.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::tools {

/// The program's end of the driver's socket.
class DriverClient {
 public:
  /// Connects if the driver takes it at once.
  explicit DriverClient(const std::filesystem::path& folder);

  [[nodiscard]] bool IsConnected() const { return m_nError == 0; }
  [[nodiscard]] bool IsRefused() const { return m_nError == ECONNREFUSED; }

  /// False when the packet could not be sent, also because the driver does not take it yet.
  bool Send(std::string_view sPacket) const;
  bool Send(const JoystickReport& report) const;

 private:
  linux_adapter::FileDescriptor m_socket;
  int m_nError = 0;
};

/// Connects as soon as the driver takes it.
[[nodiscard]] DriverClient ConnectedClient(const std::filesystem::path& folder);

}  // namespace quillorbit::tools
