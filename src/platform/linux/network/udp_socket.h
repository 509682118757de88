#pragma once

#include <memory>

#include "platform/udp_socket.h"

namespace quillorbit::linux_adapter {

/// UDP over the kernel's sockets. Needs the toolkit's event loop in the thread that uses it.
///
/// A handler of DataArrival may close and rebind the socket that called it.
class LinuxUdpSockets final : public platform::UdpSockets {
 public:
  [[nodiscard]] std::unique_ptr<platform::UdpSocket> NewUdpSocket() override;
};

}  // namespace quillorbit::linux_adapter
