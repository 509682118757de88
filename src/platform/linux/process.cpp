#include "platform/linux/process.h"

#include <filesystem>
#include <system_error>

#include <sys/stat.h>

#include "platform/linux/lock_file.h"
#include "platform/linux/runtime_folder.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sProgramFile = "/proc/self/exe";

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

}  // namespace quillorbit::linux_adapter
