#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace quillorbit::test {

/// Asks until the condition holds, with a pause in between; false when it does not within the
/// limit.
[[nodiscard]] bool Eventually(const std::function<bool()>& condition,
                              std::chrono::seconds limit = std::chrono::seconds(20),
                              const std::function<void()>& pause = {});

[[nodiscard]] std::string ReadFile(const std::filesystem::path& file);
void WriteFile(const std::filesystem::path& file, std::string_view sContent);

/// A path to which every write fails because the disk is full.
[[nodiscard]] inline std::string FullDisk() { return "/dev/full"; }

/// A new folder, removed at the end; the runtime folder of the processes under test.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(TemporaryFolder&&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] std::filesystem::path operator/(const std::string& sName) const {
    return m_folder / sName;
  }
  [[nodiscard]] const std::filesystem::path& Path() const { return m_folder; }

 private:
  std::filesystem::path m_folder;
};

/// A program under test. Its standard output and error go to files in its folder. Destroying this
/// kills the program.
class ChildProcess {
 public:
  ChildProcess(const TemporaryFolder& folder, const std::string& sProgram,
               const std::vector<std::string>& arguments);
  ChildProcess(ChildProcess&&) = delete;
  ~ChildProcess();

  void Signal(int nSignal) const;
  /// The exit code; 128 plus the number of the signal that ended it; -1 when it goes on running.
  [[nodiscard]] int Wait();
  [[nodiscard]] bool IsRunning();
  [[nodiscard]] std::string Output() const { return ReadFile(m_output); }
  [[nodiscard]] std::string Errors() const { return ReadFile(m_errors); }

 private:
  std::filesystem::path m_output, m_errors;
  pid_t m_pid;
  int m_nExitCode = -1;
};

}  // namespace quillorbit::test
