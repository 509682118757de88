#include "platform/linux/process/process.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "platform/linux/process/lock_file.h"
#include "platform/linux/process/runtime_folder.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sProgramFile = "/proc/self/exe";

/// The abstract address of a named mutex. The machine's cannot be taken for a session's: those
/// begin with a folder.
std::string MutexAddress(std::string_view sName) {
  constexpr std::string_view sMachine = "Global\\";
  if (sName.starts_with(sMachine)) return sName == sMachine ? std::string() : std::string(sName);
  return sName.empty() ? std::string() : RuntimeFolder().string() + '/' + std::string(sName);
}

/// A socket with an abstract address of its own, to which nobody can connect; not open when it
/// cannot be.
FileDescriptor BindAbstract(std::string_view sAddress) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  // The NUL in front makes it abstract. An address of no more than that would be any free one.
  if (sAddress.empty() || sAddress.size() >= sizeof address.sun_path) return {};
  std::memcpy(address.sun_path + 1, sAddress.data(), sAddress.size());
  const auto nLength =
      static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + sAddress.size());
  FileDescriptor fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!fd.IsOpen() || bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), nLength) != 0)
    return {};
  return fd;
}

}  // namespace

LinuxProcess::LinuxProcess(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    if (i > 1) m_sCommand += ' ';
    m_sCommand += argv[i];
  }
  const std::filesystem::path program = std::filesystem::read_symlink(sProgramFile);
  m_sPath = program.parent_path();
  m_sEXEName = program.stem();  // of a name that begins with its only dot, the whole name
  TakeInstanceLock();
}

void LinuxProcess::TakeInstanceLock() {
  struct stat program {};
  if (stat(sProgramFile, &program) != 0) return;
  try {
    const std::string sName = "quillorbit." + std::to_string(program.st_dev) + "." +
                              std::to_string(program.st_ino) + ".lock";
    m_instanceLock = TryLock(RuntimeFolder() / sName);
    m_bPrevInstance = !m_instanceLock.IsOpen();
  } catch (const std::system_error&) {
    // Without a lock file this copy knows of no other one.
  }
}

platform::MutexHandle LinuxProcess::CreateMutexA(const void* /*pSecurityAttributes*/,
                                                 bool /*bInitialOwner*/, const char* sName) {
  try {
    const std::string sAddress = MutexAddress(sName == nullptr ? "" : sName);
    if (!m_mutexes.contains(sAddress)) {
      FileDescriptor fd = BindAbstract(sAddress);
      if (!fd.IsOpen()) return 0;
      m_mutexes.emplace(sAddress, std::move(fd));
    }
    return ++m_hLastMutex;
  } catch (const std::exception&) {
    return 0;  // there is no runtime folder
  }
}

double LinuxProcess::Rnd() {
  // Rounding may give the upper bound itself, which is below 1 then.
  return std::uniform_real_distribution<double>(0, std::nextafter(1.0, 0.0))(m_random);
}

}  // namespace quillorbit::linux_adapter
