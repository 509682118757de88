#pragma once

#include <filesystem>

#include "joystick/JoystickReport.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::tools {

/// What has happened at the driver's socket.
struct DriverEvent {
  enum class Kind {
    nothing,
    clientConnected,
    clientRefused,
    report,
    rejectedPacket,
    clientDisconnected
  };

  Kind kind = Kind::nothing;
  JoystickReport report = {};  ///< when a report has come
};

/// The driver's end of the user-space device: a SOCK_SEQPACKET socket with the device's name, where
/// each packet is a control code and its input buffer. The device is exclusive: while a client is
/// connected nobody listens, and a second connect() fails at once. Failures throw
/// std::system_error.
class DriverSocket {
 public:
  /// Throws when another driver holds the folder. Nothing can connect yet.
  explicit DriverSocket(const std::filesystem::path& folder);
  DriverSocket(const DriverSocket&) = delete;
  DriverSocket& operator=(const DriverSocket&) = delete;
  /// Removes the socket.
  ~DriverSocket();

  /// Lets a client connect; what a killed driver has left at the path is replaced.
  void Listen();

  /// Takes the next event; it never blocks.
  [[nodiscard]] DriverEvent Next();

  /// Becomes readable when there is an event; another descriptor after each connection and
  /// disconnection.
  [[nodiscard]] int Fd() const { return m_client.IsOpen() ? m_client.Get() : m_listener.Get(); }

  [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

 private:
  DriverEvent Accept();
  DriverEvent Receive();

  std::filesystem::path m_path;
  linux_adapter::FileDescriptor m_lock;
  linux_adapter::FileDescriptor m_listener;
  linux_adapter::FileDescriptor m_client;
};

}  // namespace quillorbit::tools
