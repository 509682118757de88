#include "udp_receiver.h"

#include <array>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace quillorbit::tools {

UdpReceiver::UdpReceiver(bool bIpv6)
    : m_socket(socket(bIpv6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in ipv4{};
  ipv4.sin_family = AF_INET;
  ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sockaddr_in6 ipv6{};
  ipv6.sin6_family = AF_INET6;
  ipv6.sin6_addr = in6addr_loopback;
  auto* address = bIpv6 ? reinterpret_cast<sockaddr*>(&ipv6) : reinterpret_cast<sockaddr*>(&ipv4);
  socklen_t nLength = bIpv6 ? sizeof ipv6 : sizeof ipv4;
  EXPECT_EQ(bind(m_socket.Get(), address, nLength), 0);
  EXPECT_EQ(getsockname(m_socket.Get(), address, &nLength), 0);
  m_sPort = std::to_string(ntohs(bIpv6 ? ipv6.sin6_port : ipv4.sin_port));
}

std::optional<std::string> UdpReceiver::Receive(int nMilliseconds) const {
  pollfd waited{.fd = m_socket.Get(), .events = POLLIN, .revents = 0};
  if (poll(&waited, 1, nMilliseconds) != 1) return std::nullopt;
  std::array<char, 2048> datagram;
  const ssize_t nReceived = recv(m_socket.Get(), datagram.data(), datagram.size(), 0);
  if (nReceived < 0) return std::nullopt;
  return std::string(datagram.data(), static_cast<std::size_t>(nReceived));
}

}  // namespace quillorbit::tools
