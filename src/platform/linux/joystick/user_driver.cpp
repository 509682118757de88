#include "platform/linux/joystick/user_driver.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <system_error>

#include <endian.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <QSocketNotifier>
#include <QTimer>

#include "platform/linux/joystick/user_driver_socket.h"

namespace quillorbit::linux_adapter {
namespace {

/// How often a driver that went away is looked for.
constexpr std::chrono::milliseconds searchInterval{500};

FileDescriptor NewEpoll() {
  FileDescriptor epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll.IsOpen()) throw std::system_error(errno, std::generic_category(), "epoll");
  return epoll;
}

/// Whether the last packet failed for want of room and not because the driver is gone.
bool IsQueueFull() {
  return errno == EAGAIN || errno == EINTR || errno == ENOBUFS || errno == ENOMEM;
}

class UserDriver final : public Joystick {
 public:
  explicit UserDriver(FileDescriptor connected);
  ~UserDriver() override;
  UserDriver(const UserDriver&) = delete;
  UserDriver& operator=(const UserDriver&) = delete;

  [[nodiscard]] bool Control(std::uint32_t lControlCode, std::span<const std::byte> input) override;

 private:
  bool Send(std::uint32_t lControlCode, std::span<const std::byte> input);
  bool SendNewest();
  void SetOwed(bool bOwed);
  void Watch(int operation);
  void OnSocketEvent();
  void OnSearch();

  FileDescriptor m_socket;  ///< not open while the driver is gone
  /// Watches the socket. Changing what it waits for allocates nothing; enabling a notifier would.
  FileDescriptor m_epoll = NewEpoll();
  QSocketNotifier m_notifier{m_epoll.Get(), QSocketNotifier::Read};
  QTimer m_search;  ///< runs from the driver's departure until its return is certain
  std::optional<std::array<std::byte, nReportBytes>> m_newest;
  bool m_bOwed = false;  ///< the driver has not been given the newest report
};

UserDriver::UserDriver(FileDescriptor connected) : m_socket(std::move(connected)) {
  QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                   [this] { OnSocketEvent(); });
  m_search.setInterval(searchInterval);
  m_search.callOnTimeout([this] { OnSearch(); });
  Watch(EPOLL_CTL_ADD);
}

UserDriver::~UserDriver() {
  if (!m_bOwed || !m_socket.IsOpen()) return;
  // Room for one more packet behind a full queue: the kernel doubles the size that it is given.
  int nSize = 0;
  socklen_t nLength = sizeof nSize;
  getsockopt(m_socket.Get(), SOL_SOCKET, SO_SNDBUF, &nSize, &nLength);
  setsockopt(m_socket.Get(), SOL_SOCKET, SO_SNDBUF, &nSize, sizeof nSize);
  SendNewest();
}

bool UserDriver::Control(std::uint32_t lControlCode, std::span<const std::byte> input) {
  if (lControlCode != reportControlCode || input.size() != nReportBytes)
    return !m_bOwed && Send(lControlCode, input);  // nothing overtakes a report
  std::ranges::copy(input, m_newest.emplace().begin());
  return SendNewest();
}

bool UserDriver::Send(std::uint32_t lControlCode, std::span<const std::byte> input) {
  std::uint32_t lCode = htole32(lControlCode);
  // sendmsg() only reads what an iovec, which has no const form, points to.
  std::array<iovec, 2> parts = {
      iovec{&lCode, sizeof lCode},
      iovec{const_cast<std::byte*>(input.data()), input.size()},
  };
  msghdr packet{};
  packet.msg_iov = parts.data();
  packet.msg_iovlen = parts.size();
  const ssize_t nSent = sendmsg(m_socket.Get(), &packet, MSG_NOSIGNAL | MSG_DONTWAIT);
  return nSent == static_cast<ssize_t>(sizeof lCode + input.size());
}

bool UserDriver::SendNewest() {
  const bool bSent = Send(reportControlCode, *m_newest);
  SetOwed(!bSent);
  return bSent;
}

void UserDriver::SetOwed(bool bOwed) {
  if (m_bOwed == bOwed) return;
  m_bOwed = bOwed;
  Watch(EPOLL_CTL_MOD);
}

/// Waits for room while a report is owed, and always for the connection's end, which needs no bit.
void UserDriver::Watch(int operation) {
  epoll_event event{};
  if (m_bOwed) event.events = EPOLLOUT;
  epoll_ctl(m_epoll.Get(), operation, m_socket.Get(), &event);
}

void UserDriver::OnSocketEvent() {
  epoll_event event{};
  if (epoll_wait(m_epoll.Get(), &event, 1, 0) != 1) return;
  const bool bEnded = (event.events & (EPOLLHUP | EPOLLERR)) != 0;
  if (!bEnded && (!m_bOwed || SendNewest() || IsQueueFull())) return;
  m_socket = {};
  if (m_search.isActive()) return;
  m_search.start();
  std::fputs(
      "quillorbit: the joystick driver went away; it gets the newest report when it is back\n",
      stderr);
}

void UserDriver::OnSearch() {
  if (m_socket.IsOpen()) {  // since the last time: the driver did not turn this program away
    m_search.stop();
    std::fputs("quillorbit: the joystick driver is back\n", stderr);
    return;
  }
  try {
    m_socket = ConnectToUserDriver();
  } catch (const std::exception&) {
    return;
  }
  m_bOwed = m_newest.has_value();
  Watch(EPOLL_CTL_ADD);
}

}  // namespace

std::unique_ptr<Joystick> OpenUserDriver() {
  return std::make_unique<UserDriver>(ConnectToUserDriver());
}

}  // namespace quillorbit::linux_adapter
