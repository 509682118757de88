#include "platform/linux/network/udp_socket.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <system_error>
#include <vector>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QTimer>

#include "linux/support.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_tests {
namespace {

using linux_adapter::FileDescriptor;
using platform::SocketProtocol;
using platform::UdpSocket;

union Address {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
};

Address MakeAddress(int family, bool bLoopback, int port) {
  Address address{};
  const auto netPort = htons(static_cast<std::uint16_t>(port));
  if (family == AF_INET) {
    address.v4 = {.sin_family = AF_INET, .sin_port = netPort, .sin_addr = {}, .sin_zero = {}};
    address.v4.sin_addr.s_addr = htonl(bLoopback ? INADDR_LOOPBACK : INADDR_ANY);
  } else {
    address.v6.sin6_family = AF_INET6;
    address.v6.sin6_port = netPort;
    address.v6.sin6_addr = bLoopback ? in6addr_loopback : in6addr_any;
  }
  return address;
}

/// A foreign program's socket. Its option is SO_REUSEADDR, SO_REUSEPORT or 0 for none.
FileDescriptor Hold(int family, bool bLoopback, int option, int port) {
  FileDescriptor fd(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const int on = 1;
  if (family == AF_INET6) setsockopt(fd.Get(), IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
  if (option != 0) setsockopt(fd.Get(), SOL_SOCKET, option, &on, sizeof on);
  const Address address = MakeAddress(family, bLoopback, port);
  const socklen_t nSize = family == AF_INET ? sizeof address.v4 : sizeof address.v6;
  return bind(fd.Get(), &address.any, nSize) == 0 ? std::move(fd) : FileDescriptor();
}

int PortOf(const FileDescriptor& fd) {
  Address address{};
  socklen_t nSize = sizeof address;
  getsockname(fd.Get(), &address.any, &nSize);
  return ntohs(address.any.sa_family == AF_INET ? address.v4.sin_port : address.v6.sin6_port);
}

int FreePort() { return PortOf(Hold(AF_INET, false, 0, 0)); }

int ErrorOfBind(UdpSocket& socket, int port) {
  try {
    socket.Bind(port);
    return 0;
  } catch (const std::system_error& error) {
    return error.code().value();
  }
}

class LinuxUdpSocketTest : public testing::Test {
 protected:
  void SetUp() override { m_socket->Protocol(SocketProtocol::UDP); }

  /// A datagram of that length whose bytes all have that value.
  void Send(std::size_t nLength, int value = 0, int family = AF_INET) {
    const std::vector<std::byte> data(nLength, static_cast<std::byte>(value));
    const FileDescriptor fd(socket(family, SOCK_DGRAM, 0));
    const Address to = MakeAddress(family, true, m_port);
    const socklen_t nSize = family == AF_INET ? sizeof to.v4 : sizeof to.v6;
    ASSERT_EQ(sendto(fd.Get(), data.data(), nLength, 0, &to.any, nSize),
              static_cast<ssize_t>(nLength));
  }

  /// Takes the pending datagram and notes its length and first byte, which is all that fits.
  void Take(UdpSocket& socket) {
    std::array<std::byte, 1> first{};
    m_lengths.push_back(socket.GetData(first));
    m_values.push_back(std::to_integer<int>(first[0]));
  }

  linux_adapter::LinuxUdpSockets m_sockets;
  std::unique_ptr<UdpSocket> m_socket = m_sockets.NewUdpSocket();
  int m_port = FreePort();
  std::vector<std::size_t> m_lengths;
  std::vector<int> m_values;
};

TEST_F(LinuxUdpSocketTest, GivesEveryDatagramOfABurstInOrderWithItsTrueLength) {
  m_socket->DataArrival = [this] { Take(*m_socket); };
  m_socket->Bind(m_port);
  const std::vector<std::size_t> lengths = {0, 1, 19, 20, 21, 65507, 0, 20};
  for (const std::size_t nLength : lengths) Send(nLength);
  Send(2, 0, AF_INET6);
  ASSERT_TRUE(WaitUntil([&] { return m_lengths.size() > lengths.size(); }));
  Settle();
  auto expected = lengths;
  expected.push_back(2);
  EXPECT_EQ(m_lengths, expected);
}

TEST_F(LinuxUdpSocketTest, LetsTimersHaveTheirTurnInALongBurst) {
  m_socket->DataArrival = [this] { Take(*m_socket); };
  m_socket->Bind(m_port);
  for (int i = 0; i < 250; ++i) Send(20, i);
  std::size_t nAtLastTurn = 0, nMostBetweenTurns = 0;
  QTimer timer;
  timer.callOnTimeout([&] {
    nMostBetweenTurns = std::max(nMostBetweenTurns, m_values.size() - nAtLastTurn);
    nAtLastTurn = m_values.size();
  });
  timer.start(0);
  ASSERT_TRUE(WaitUntil([&] { return nAtLastTurn == 250; }));
  std::vector<int> expected(250);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(m_values, expected);
  EXPECT_LE(nMostBetweenTurns, 64u);
}

TEST_F(LinuxUdpSocketTest, MayBeReboundInsideTheHandlerAndDropsWhatWasPending) {
  const int oldPort = m_port;
  const int newPort = FreePort();
  m_socket->DataArrival = [&] {
    Take(*m_socket);
    if (m_values.size() > 1) return;
    m_socket->Close();
    m_socket->Bind(newPort);
  };
  m_socket->Bind(m_port);
  Send(20, 1);
  Send(20, 2);
  ASSERT_TRUE(WaitUntil([this] { return !m_values.empty(); }));
  m_port = newPort;
  Send(20, 3);
  Send(20, 4);
  ASSERT_TRUE(WaitUntil([this] { return m_values.size() > 2; }));
  Settle();
  EXPECT_EQ(m_values, (std::vector{1, 3, 4}));
  EXPECT_TRUE(Hold(AF_INET, false, 0, oldPort).IsOpen());  // the old port is free again
}

TEST_F(LinuxUdpSocketTest, RefusesAPortThatAnybodyHoldsOnAnyLocalAddress) {
  for (const int family : {AF_INET, AF_INET6})
    for (const bool bLoopback : {false, true})
      for (const int option : {0, SO_REUSEADDR, SO_REUSEPORT}) {
        const FileDescriptor holder = Hold(family, bLoopback, option, 0);
        ASSERT_TRUE(holder.IsOpen());
        EXPECT_EQ(ErrorOfBind(*m_socket, PortOf(holder)), EADDRINUSE)
            << family << ' ' << bLoopback << ' ' << option;
      }
  m_socket->Bind(m_port);  // the failures left it closed
  EXPECT_FALSE(Hold(AF_INET, true, SO_REUSEPORT, m_port).IsOpen());
  EXPECT_FALSE(Hold(AF_INET6, true, SO_REUSEADDR, m_port).IsOpen());
  EXPECT_EQ(ErrorOfBind(*m_sockets.NewUdpSocket(), m_port), EADDRINUSE);
}

TEST_F(LinuxUdpSocketTest, RefusesWhatIsNoUdpPort) {
  for (const int port : {0, -1, 65536, INT32_MAX, INT32_MIN})
    EXPECT_EQ(ErrorOfBind(*m_socket, port), EINVAL) << port;
  m_socket->Protocol(SocketProtocol::TCP);
  EXPECT_EQ(ErrorOfBind(*m_socket, m_port), EPROTONOSUPPORT);
  m_socket->Protocol(SocketProtocol::UDP);
  m_socket->Close();
  EXPECT_EQ(ErrorOfBind(*m_socket, m_port), 0);
  EXPECT_EQ(ErrorOfBind(*m_socket, FreePort()), EINVAL);
  EXPECT_THROW((void)m_socket->GetData({}), std::system_error);
}

}  // namespace
}  // namespace quillorbit::linux_tests
