#include "platform/linux/joystick/user_driver_socket.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "platform/linux/process/runtime_folder.h"

namespace quillorbit::linux_adapter {
namespace {

[[noreturn]] void Fail(const std::filesystem::path& socket, const std::string& sFinding) {
  throw std::runtime_error(socket.string() + ": " + sFinding);
}

std::string ErrnoText() { return std::generic_category().message(errno); }

bool IsTrusted(uid_t owner) { return owner == geteuid() || owner == 0; }

/// The socket of a driver that may be trusted as far as the file shows.
std::filesystem::path TrustedSocket() {
  const std::filesystem::path path = RuntimeFolder() / sDeviceName;
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) Fail(path, "no driver is running; to use one, start quillorbit-driver");
    Fail(path, ErrnoText());
  }
  if (!S_ISSOCK(status.st_mode)) Fail(path, "this is not a driver's socket; remove it");
  if (!IsTrusted(status.st_uid))
    Fail(path, "this socket belongs to another user (uid " + std::to_string(status.st_uid) +
                   ") and is not trusted; start quillorbit-driver as yourself");
  return path;
}

FileDescriptor Connect(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.native().size() >= sizeof address.sun_path)
    Fail(path, "the path is too long for a socket; set XDG_RUNTIME_DIR to a shorter one");
  std::memcpy(address.sun_path, path.c_str(), path.native().size());

  FileDescriptor fd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd.IsOpen()) Fail(path, ErrnoText());
  if (connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    // EAGAIN: another program is still waiting for the driver to accept it.
    if (errno == ECONNREFUSED || errno == EAGAIN)
      Fail(path,
           "the driver refuses: another program is using it, or it is gone and left its socket "
           "behind; close the other program or restart quillorbit-driver");
    Fail(path, ErrnoText());
  }
  return fd;
}

}  // namespace

void FindUserDriver() { (void)TrustedSocket(); }

FileDescriptor ConnectToUserDriver() {
  const std::filesystem::path path = TrustedSocket();
  FileDescriptor fd = Connect(path);
  // The file may have been replaced since it was checked; the kernel knows who listens.
  ucred driver{};
  socklen_t nLength = sizeof driver;
  if (getsockopt(fd.Get(), SOL_SOCKET, SO_PEERCRED, &driver, &nLength) != 0)
    Fail(path, ErrnoText());
  if (!IsTrusted(driver.uid))
    Fail(path, "the driver runs as another user (uid " + std::to_string(driver.uid) +
                   ") and is not trusted; start quillorbit-driver as yourself");
  return fd;
}

}  // namespace quillorbit::linux_adapter
