#include "tools/driver_socket.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "base/Bytes.h"
#include "platform/linux/process/lock_file.h"
#include "platform/linux/process/runtime_folder.h"
#include "tools/system_call.h"

namespace quillorbit::tools {
namespace {

using Kind = DriverEvent::Kind;

linux_adapter::FileDescriptor TakeLock(const std::filesystem::path& folder) {
  linux_adapter::FileDescriptor lock =
      linux_adapter::TryLock(folder / (std::string(linux_adapter::sDeviceName) + ".lock"));
  if (!lock.IsOpen()) throw std::runtime_error("a driver is already running in " + folder.string());
  return lock;
}

sockaddr_un Address(const std::string& sPath) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (sPath.size() >= sizeof address.sun_path)
    throw std::system_error(ENAMETOOLONG, std::generic_category(), sPath);
  std::memcpy(address.sun_path, sPath.data(), sPath.size());
  return address;
}

bool IsTrusted(int client) {
  ucred peer{};
  socklen_t nLength = sizeof peer;
  Checked(getsockopt(client, SOL_SOCKET, SO_PEERCRED, &peer, &nLength), "SO_PEERCRED");
  return peer.uid == geteuid() || peer.uid == 0;
}

DriverEvent FromPacket(std::span<const std::byte> packet) {
  constexpr std::size_t nCode = sizeof lReportControlCode;
  if (packet.size() != nCode + JoystickReport::nBytes ||
      LoadLittleEndian<std::uint32_t>(packet) != lReportControlCode)
    return {Kind::rejectedPacket};
  return {Kind::report, JoystickReport::FromBytes(packet.subspan<nCode, JoystickReport::nBytes>())};
}

}  // namespace

DriverSocket::DriverSocket(const std::filesystem::path& folder)
    : m_path(folder / linux_adapter::sDeviceName), m_lock(TakeLock(folder)) {}

DriverSocket::~DriverSocket() {
  if (m_listener.IsOpen() || m_client.IsOpen()) unlink(m_path.c_str());
}

void DriverSocket::Listen() {
  // Renamed into its place when it is ready, so that the path never disappears.
  const std::string sNew = m_path.string() + ".new";
  const sockaddr_un address = Address(sNew);
  constexpr int type = SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC;
  linux_adapter::FileDescriptor listener(Checked(socket(AF_UNIX, type, 0), "socket"));
  unlink(sNew.c_str());
  Checked(fchmod(listener.Get(), 0600), sNew);  // the mode that bind() gives to the file
  Checked(bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), sNew);
  Checked(listen(listener.Get(), 0), sNew);
  Checked(std::rename(sNew.c_str(), m_path.c_str()), m_path);
  m_listener = std::move(listener);
}

DriverEvent DriverSocket::Next() { return m_client.IsOpen() ? Receive() : Accept(); }

DriverEvent DriverSocket::Accept() {
  linux_adapter::FileDescriptor client(
      accept4(m_listener.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!client.IsOpen()) {
    if (errno == EAGAIN || errno == ECONNABORTED || errno == EINTR) return {};
    throw SystemError(m_path);
  }
  if (!IsTrusted(client.Get())) return {Kind::clientRefused};

  // An empty packet has credentials, which the end of the connection has not.
  const int on = 1;
  Checked(setsockopt(client.Get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on), "SO_PASSCRED");
  m_client = std::move(client);
  m_listener = {};
  return {Kind::clientConnected};
}

DriverEvent DriverSocket::Receive() {
  std::array<std::byte, sizeof lReportControlCode + JoystickReport::nBytes> packet;
  alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(ucred))> credentials;
  iovec buffer{.iov_base = packet.data(), .iov_len = packet.size()};
  msghdr message{};
  message.msg_iov = &buffer;
  message.msg_iovlen = 1;
  message.msg_control = credentials.data();
  message.msg_controllen = credentials.size();

  const ssize_t nReceived = recvmsg(m_client.Get(), &message, MSG_CMSG_CLOEXEC);
  if (nReceived < 0 && (errno == EAGAIN || errno == EINTR)) return {};
  if (nReceived < 0 && errno != ECONNRESET) throw SystemError(m_path);
  if (nReceived < 0 || (nReceived == 0 && message.msg_controllen == 0)) {
    Listen();
    m_client = {};
    return {Kind::clientDisconnected};
  }
  if ((message.msg_flags & MSG_TRUNC) != 0) return {Kind::rejectedPacket};
  return FromPacket(std::span(packet).first(static_cast<std::size_t>(nReceived)));
}

}  // namespace quillorbit::tools
