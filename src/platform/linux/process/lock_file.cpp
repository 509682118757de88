#include "platform/linux/process/lock_file.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>

namespace quillorbit::linux_adapter {

FileDescriptor TryLock(const std::filesystem::path& path) {
  FileDescriptor file(
      open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file.IsOpen()) throw std::system_error(errno, std::generic_category(), path.string());
  if (flock(file.Get(), LOCK_EX | LOCK_NB) == 0) return file;
  if (errno == EWOULDBLOCK) return {};
  throw std::system_error(errno, std::generic_category(), path.string());
}

}  // namespace quillorbit::linux_adapter
