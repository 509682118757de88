#include "platform/linux/process/whole_file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillorbit::linux_adapter {
namespace {

namespace fs = std::filesystem;

/// As many symbolic links as the kernel follows.
constexpr int nLinksFollowed = 40;
/// Names to try for a new file beside the target; others may be there from earlier.
constexpr int nNamesTried = 100;

[[noreturn]] void Fail(int error, const fs::path& path) {
  throw std::system_error(error, std::generic_category(), path.string());
}

/// The file that the path means, which need not exist.
fs::path FollowLinks(fs::path path) {
  for (int nLinks = 0; fs::is_symlink(path); ++nLinks) {
    if (nLinks == nLinksFollowed) Fail(ELOOP, path);
    path = path.parent_path() / fs::read_symlink(path);  // an absolute target replaces the folder
  }
  return path;
}

/// The file to be replaced; none when there is no such file.
std::optional<struct stat> OldStatus(const fs::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    Fail(errno, path);
  }
  if (!S_ISREG(status.st_mode)) Fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path);
  // Renaming needs no right to write to the file itself; a file that is write-protected stays.
  if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) Fail(errno, path);
  return status;
}

/// Gives the file another name.
void KeepAside(const fs::path& file) {
  for (int i = 0; i < nNamesTried; ++i) {
    fs::path aside = file;
    aside += i == 0 ? ".refused" : ".refused-" + std::to_string(i);
    if (fs::exists(fs::symlink_status(aside))) continue;
    if (std::rename(file.c_str(), aside.c_str()) != 0) Fail(errno, aside);
    return;
  }
  Fail(EEXIST, file);
}

}  // namespace

std::string ReadWholeFile(const fs::path& path, std::size_t nLimit) {
  const auto refuse = [&path](const std::string& sWhy) {
    throw std::runtime_error(path.string() + ' ' + sWhy);
  };
  const std::string sTooLarge = "is larger than " + std::to_string(nLimit) + " bytes";
  // Opening a pipe would wait for its writer without O_NONBLOCK.
  const FileDescriptor fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  struct stat status {};
  if (!fd.IsOpen() && errno == ENOENT) return {};
  if (!fd.IsOpen() || fstat(fd.Get(), &status) != 0)
    refuse(std::string("cannot be read: ") + std::strerror(errno));
  if (!S_ISREG(status.st_mode)) refuse("is not a regular file");
  if (static_cast<std::size_t>(status.st_size) > nLimit) refuse(sTooLarge);

  std::string sContent;
  std::array<char, 65536> part;
  for (;;) {
    const ssize_t n = read(fd.Get(), part.data(), part.size());
    if (n == 0) return sContent;
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) refuse(std::string("cannot be read: ") + std::strerror(errno));
    sContent.append(part.data(), static_cast<std::size_t>(n));
    if (sContent.size() > nLimit) refuse(sTooLarge);  // it grew, or has no size of its own
  }
}

FileReplacement::FileReplacement(const fs::path& path) : m_target(FollowLinks(path)) {
  const auto old = OldStatus(m_target);
  m_bOld = old.has_value();
  // Not mkostemp(): what open() gives a new file here follows the umask and the folder's default
  // access list.
  const mode_t mode = old ? old->st_mode & 07777 : 0666;
  for (int i = 0; i < nNamesTried && !m_fd.IsOpen(); ++i) {
    m_newFile = m_target;
    m_newFile += ".tmp" + std::to_string(getpid()) + "-" + std::to_string(i);
    m_fd = FileDescriptor(open(m_newFile.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!m_fd.IsOpen() && errno != EEXIST) Fail(errno, m_newFile);
  }
  if (!m_fd.IsOpen()) Fail(EEXIST, m_newFile);
  if (!old) return;
  if (fchown(m_fd.Get(), old->st_uid, old->st_gid) != 0)  // only root can give a file away
    (void)!fchown(m_fd.Get(), static_cast<uid_t>(-1), old->st_gid);
  if (fchmod(m_fd.Get(), mode) != 0) {
    const int error = errno;
    unlink(m_newFile.c_str());  // the destructor of what was never built does not run
    Fail(error, m_newFile);
  }
}

FileReplacement::~FileReplacement() {
  if (!m_newFile.empty()) unlink(m_newFile.c_str());
}

void FileReplacement::Write(std::string_view sContent) {
  while (!sContent.empty()) {
    const ssize_t n = write(m_fd.Get(), sContent.data(), sContent.size());
    if (n < 0 && errno != EINTR) Fail(errno, m_newFile);
    if (n > 0) sContent.remove_prefix(static_cast<std::size_t>(n));
  }
}

void FileReplacement::Replace(std::string_view sContent, OldFile eOldFile) {
  Write(sContent);
  // The content must be on the disk before the name is, or a crash could leave an empty file.
  if (fsync(m_fd.Get()) != 0) Fail(errno, m_newFile);
  if (close(m_fd.Release()) != 0) Fail(errno, m_newFile);  // some file systems report errors late
  if (m_bOld && eOldFile == OldFile::kept) KeepAside(m_target);
  if (std::rename(m_newFile.c_str(), m_target.c_str()) != 0) Fail(errno, m_target);
  m_newFile.clear();
}

}  // namespace quillorbit::linux_adapter
