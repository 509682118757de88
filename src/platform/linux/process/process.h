#pragma once

#include <map>
#include <random>
#include <string>

#include "platform/linux/process/file_descriptor.h"
#include "platform/process.h"

namespace quillorbit::linux_adapter {

/// The running program. Copies recognise each other by a lock file in the runtime folder that is
/// named after the program file's path and held for this object's life. So a copy that was started
/// before the program file was replaced counts; a symbolic link to the file is the same program,
/// and a second hard link another one. Where no lock file can be made, no copy is recognised.
///
/// A named mutex is an abstract socket address that this object keeps bound: nothing of it is left
/// when the process ends, however it ends. The machine's has the address "Global\NAME", the
/// session's the path of NAME in the runtime folder; /proc/net/unix lists both behind an "@".
class LinuxProcess final : public platform::Process {
 public:
  /// `argc` and `argv` are main()'s. To be created before the toolkit's application object, which
  /// removes from the arguments those that it understands.
  LinuxProcess(int argc, const char* const* argv);

  [[nodiscard]] bool PrevInstance() const override { return m_bPrevInstance; }
  [[nodiscard]] std::string Command() const override { return m_sCommand; }
  [[nodiscard]] std::string Path() const override { return m_sPath; }
  [[nodiscard]] std::string EXEName() const override { return m_sEXEName; }
  [[nodiscard]] char PathSeparator() const override { return '/'; }
  [[nodiscard]] platform::ModuleHandle hInstance() const override { return 0x400000; }

  /// Version 5.0 of the NT family: the notification areas of this desktop do what its shell does.
  [[nodiscard]] std::uint32_t GetVersion() const override { return 5; }

  /// 0 for a name that is empty or too long for an address, and for one that another process holds;
  /// that mutex exists as long as the other process.
  platform::MutexHandle CreateMutexA(const void* pSecurityAttributes, bool bInitialOwner,
                                     const char* sName) override;

  [[nodiscard]] double Rnd() override;

 private:
  std::string m_sCommand;
  std::string m_sPath;
  std::string m_sEXEName;
  FileDescriptor m_instanceLock;
  bool m_bPrevInstance = false;
  std::map<std::string, FileDescriptor> m_mutexes;  ///< by address
  platform::MutexHandle m_hLastMutex = 0;
  std::mt19937 m_random{std::random_device()()};
};

}  // namespace quillorbit::linux_adapter
