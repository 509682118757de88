#include "platform/linux/process/process.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <sys/socket.h>
#include <sys/un.h>

#include <QByteArray>
#include <QCryptographicHash>

#include "platform/linux/process/lock_file.h"
#include "platform/linux/process/runtime_folder.h"

namespace quillorbit::linux_adapter {
namespace {

/// The path of the program file, symbolic links resolved. The kernel appends a mark when the file
/// has been replaced or removed since the process started.
std::filesystem::path ProgramFile() {
  constexpr const char* sLink = "/proc/self/exe";
  constexpr std::string_view sMark = " (deleted)";
  std::string sProgram = std::filesystem::read_symlink(sLink);
  std::error_code ignored;
  if (sProgram.ends_with(sMark) && !std::filesystem::equivalent(sProgram, sLink, ignored))
    sProgram.resize(sProgram.size() - sMark.size());
  return sProgram;
}

/// The name of a program file's lock file. A path can be longer than a name.
std::string LockName(const std::filesystem::path& program) {
  const auto hash = QCryptographicHash::hash(QByteArray::fromStdString(program.string()),
                                             QCryptographicHash::Sha256);
  return "quillorbit." + hash.toHex().toStdString() + ".lock";
}

/// The abstract address of a named mutex. The machine's cannot be taken for a session's: those
/// begin with a folder.
std::string MutexAddress(std::string_view sName) {
  constexpr std::string_view sMachine = "Global\\";
  if (sName.starts_with(sMachine)) return sName == sMachine ? std::string() : std::string(sName);
  return sName.empty() ? std::string() : RuntimeFolder().string() + '/' + std::string(sName);
}

/// A socket that is bound to an abstract address and does not listen; not open when that fails.
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
  const std::filesystem::path program = ProgramFile();
  m_sPath = program.parent_path();
  m_sEXEName = program.stem();  // of a name that begins with its only dot, the whole name
  try {
    m_instanceLock = TryLock(RuntimeFolder() / LockName(program));
    m_bPrevInstance = !m_instanceLock.IsOpen();
  } catch (const std::system_error&) {
    // Without a lock file this copy recognises no other one.
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
