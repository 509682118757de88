#pragma once

#include <optional>
#include <string>

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::tools {

/// A UDP socket on a free port of the loopback interface, IPv4 or IPv6.
class UdpReceiver {
 public:
  explicit UdpReceiver(bool bIpv6 = false);

  /// As an option's value.
  [[nodiscard]] std::string Port() const { return m_sPort; }

  /// The next datagram, if one comes within the time.
  [[nodiscard]] std::optional<std::string> Receive(int nMilliseconds) const;

 private:
  linux_adapter::FileDescriptor m_socket;
  std::string m_sPort;
};

}  // namespace quillorbit::tools
