#include "platform/linux/network/udp_socket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

#include <QSocketNotifier>

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_adapter {
namespace {

/// More than any datagram that a normal network carries: the length field has 16 bits.
constexpr std::size_t nLargestDatagram = 65535;

/// How many datagrams one wake-up may raise before timers and painting get their turn; what is left
/// wakes the program again at once.
constexpr int nDatagramsPerWakeUp = 64;

/// A burst comes faster than its reports are written, and the kernel drops what does not fit. The
/// kernel's default holds about 256 small datagrams; it grants as much of this as it allows.
constexpr int nReceiveBuffer = 1 << 20;

void SetOption(int fd, int level, int option, int value, const char* sName) {
  if (setsockopt(fd, level, option, &value, sizeof value) != 0)
    throw std::system_error(errno, std::generic_category(), sName);
}

/// A socket that holds the port on every local address. It conflicts with any other holder of the
/// port on any of them, because it asks for no kind of sharing.
FileDescriptor BoundSocket(std::uint16_t port) {
  constexpr int flags = SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC;
  FileDescriptor fd(socket(AF_INET6, flags, 0));
  const bool bIPv6 = fd.IsOpen();
  if (!bIPv6 && errno == EAFNOSUPPORT) fd = FileDescriptor(socket(AF_INET, flags, 0));
  if (!fd.IsOpen()) throw std::system_error(errno, std::generic_category(), "socket");

  sockaddr_in6 all6{};
  all6.sin6_family = AF_INET6;
  all6.sin6_port = htons(port);
  all6.sin6_addr = IN6ADDR_ANY_INIT;
  sockaddr_in all4{};
  all4.sin_family = AF_INET;
  all4.sin_port = htons(port);
  all4.sin_addr.s_addr = htonl(INADDR_ANY);

  if (bIPv6) SetOption(fd.Get(), IPPROTO_IPV6, IPV6_V6ONLY, 0, "IPV6_V6ONLY");
  SetOption(fd.Get(), SOL_SOCKET, SO_RCVBUF, nReceiveBuffer, "SO_RCVBUF");
  const int result = bIPv6 ? bind(fd.Get(), reinterpret_cast<const sockaddr*>(&all6), sizeof all6)
                           : bind(fd.Get(), reinterpret_cast<const sockaddr*>(&all4), sizeof all4);
  if (result != 0)
    throw std::system_error(errno, std::generic_category(), "UDP port " + std::to_string(port));
  return fd;
}

class LinuxUdpSocket final : public platform::UdpSocket {
 public:
  LinuxUdpSocket() : m_notifier(QSocketNotifier::Read) {
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                     [this] { OnReadable(); });
  }

  void Protocol(platform::SocketProtocol eProtocol) override { m_eProtocol = eProtocol; }
  void Bind(std::int32_t lLocalPort) override;
  std::size_t GetData(std::span<std::byte> data) override;
  void Close() override;

 private:
  void OnReadable();
  [[nodiscard]] bool Receive();

  platform::SocketProtocol m_eProtocol = platform::SocketProtocol::UDP;
  FileDescriptor m_fd;
  QSocketNotifier m_notifier;
  std::optional<std::size_t> m_nPending;  ///< the pending datagram's whole length in bytes
  std::array<std::byte, nLargestDatagram> m_pending;
};

void LinuxUdpSocket::Bind(std::int32_t lLocalPort) {
  if (m_eProtocol != platform::SocketProtocol::UDP)
    throw std::system_error(std::make_error_code(std::errc::protocol_not_supported), "TCP");
  if (m_fd.IsOpen())
    throw std::system_error(std::make_error_code(std::errc::invalid_argument), "bound already");
  if (lLocalPort < 1 || lLocalPort > 65535)
    throw std::system_error(std::make_error_code(std::errc::invalid_argument),
                            "UDP port " + std::to_string(lLocalPort));
  m_fd = BoundSocket(static_cast<std::uint16_t>(lLocalPort));
  m_notifier.setSocket(m_fd.Get());
  m_notifier.setEnabled(true);
}

std::size_t LinuxUdpSocket::GetData(std::span<std::byte> data) {
  if (!m_nPending)
    throw std::system_error(std::make_error_code(std::errc::no_message_available), "GetData");
  const std::size_t nWhole = *std::exchange(m_nPending, std::nullopt);
  std::copy_n(m_pending.begin(), std::min({nWhole, m_pending.size(), data.size()}), data.begin());
  return nWhole;
}

void LinuxUdpSocket::Close() {
  m_notifier.setEnabled(false);  // before the descriptor's number can mean another file
  m_fd = {};
  m_nPending.reset();
}

void LinuxUdpSocket::OnReadable() {
  for (int i = 0; i < nDatagramsPerWakeUp && Receive(); ++i)
    if (DataArrival) DataArrival();
}

bool LinuxUdpSocket::Receive() {
  const ssize_t n = recv(m_fd.Get(), m_pending.data(), m_pending.size(), MSG_TRUNC);
  // An error is "nothing there", "closed" (by the handler) or, like a refused connection, reported
  // only once: the next wake-up reads on.
  if (n < 0) return false;
  m_nPending = static_cast<std::size_t>(n);
  return true;
}

}  // namespace

std::unique_ptr<platform::UdpSocket> LinuxUdpSockets::NewUdpSocket() {
  return std::make_unique<LinuxUdpSocket>();
}

}  // namespace quillorbit::linux_adapter
