#pragma once

#include <string>

#include "platform/linux/file_descriptor.h"
#include "platform/process.h"

namespace quillorbit::linux_adapter {

/// The running program. Two copies know of each other by a lock file in the runtime folder that is
/// named after the program file (its device and inode) and held for this object's life; where there
/// can be no lock file, no copy knows of another.
class LinuxProcess final : public platform::Process {
 public:
  /// Takes what main() was given. To be made before the toolkit's application object, which removes
  /// from the arguments those that it understands.
  LinuxProcess(int argc, const char* const* argv);

  [[nodiscard]] bool PrevInstance() const override { return m_bPrevInstance; }
  [[nodiscard]] std::string Command() const override { return m_sCommand; }
  [[nodiscard]] std::string Path() const override { return m_sPath; }
  [[nodiscard]] std::string EXEName() const override { return m_sEXEName; }
  [[nodiscard]] char PathSeparator() const override { return '/'; }

 private:
  void TakeInstanceLock();

  std::string m_sCommand;
  std::string m_sPath;
  std::string m_sEXEName;
  FileDescriptor m_instanceLock;
  bool m_bPrevInstance = false;
};

}  // namespace quillorbit::linux_adapter
