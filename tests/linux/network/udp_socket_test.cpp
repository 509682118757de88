#include "platform/linux/network/udp_socket.h"

#include <gtest/gtest.h>
#include <system_error>
#include <vector>

#include <arpa/inet.h>
#include <sys/socket.h>

#include <QTimer>

#include "linux/support.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_tests {
namespace {

using Datagram = std::pair<std::size_t, int>;  ///< its length and its first byte

constexpr const char* sIPv4 = "::ffff:127.0.0.1";
constexpr const char* sIPv6 = "::1";

/// Another program's socket at a local address, which it would share with whoever shares it too.
struct OtherSocket {
  explicit OtherSocket(const char* sAddress, int port = 0) {
    const int on = 1;
    setsockopt(m_fd.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    setsockopt(m_fd.Get(), SOL_SOCKET, SO_REUSEPORT, &on, sizeof on);
    m_address.sin6_family = AF_INET6;
    m_address.sin6_port = htons(static_cast<std::uint16_t>(port));
    inet_pton(AF_INET6, sAddress, &m_address.sin6_addr);
    bind(m_fd.Get(), pAddress, nLength);
    getsockname(m_fd.Get(), pAddress, &nLength);
    m_port = ntohs(m_address.sin6_port);
  }
  void Send(int port, std::size_t nBytes, int value) {
    const std::vector<std::byte> data(nBytes, static_cast<std::byte>(value));
    m_address.sin6_port = htons(static_cast<std::uint16_t>(port));
    ASSERT_EQ(sendto(m_fd.Get(), data.data(), nBytes, 0, pAddress, nLength), ssize_t(nBytes));
  }

  linux_adapter::FileDescriptor m_fd{socket(AF_INET6, SOCK_DGRAM, 0)};
  sockaddr_in6 m_address{};
  sockaddr* pAddress = reinterpret_cast<sockaddr*>(&m_address);
  socklen_t nLength = sizeof m_address;
  int m_port;  ///< 0: it could not have the address
};

struct LinuxUdpSocketTest : testing::Test {
  std::unique_ptr<platform::UdpSocket> m_socket = linux_adapter::LinuxUdpSockets().NewUdpSocket();
  OtherSocket m_ipv4{sIPv4}, m_ipv6{sIPv6};
  int m_port = OtherSocket(sIPv4).m_port;  // free again
};

TEST_F(LinuxUdpSocketTest, DrainsABurstInOrderAndLetsTimersHaveTheirTurn) {
  std::vector<Datagram> taken;
  m_socket->DataArrival = [&] {
    std::byte first{};
    const std::size_t nBytes = m_socket->GetData({&first, 1});
    taken.emplace_back(nBytes, std::to_integer<int>(first));
  };
  m_socket->Bind(m_port);
  std::vector<Datagram> expected = {{0, 0}, {1, 1}, {21, 2}, {65507, 3}};
  for (int i = 4; i < 250; ++i) expected.emplace_back(20, i);
  for (const auto& [nBytes, value] : expected)
    (value % 2 == 0 ? m_ipv4 : m_ipv6).Send(m_port, nBytes, value);
  QTimer timer;
  timer.callOnTimeout([&, nAtLastTurn = std::size_t{0}]() mutable {
    EXPECT_LE(taken.size() - nAtLastTurn, 64u);
    nAtLastTurn = taken.size();
  });
  timer.start(0);
  ASSERT_TRUE(WaitUntil([&] { return taken.size() == 250; }));
  EXPECT_EQ(taken, expected);
}

TEST_F(LinuxUdpSocketTest, RefusesAPortThatAnybodyHoldsOrThatIsNone) {
  for (const int port : {m_ipv4.m_port, m_ipv6.m_port, 0, 65536, -1})
    EXPECT_THROW(m_socket->Bind(port), std::system_error) << port;
  m_socket->Bind(m_port);  // the failures left it closed
  EXPECT_THROW(m_socket->Bind(m_port), std::system_error);
  EXPECT_EQ(OtherSocket(sIPv4, m_port).m_port, 0);
}

}  // namespace
}  // namespace quillorbit::linux_tests
