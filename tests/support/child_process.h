#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace quillorbit::test {

/// Asks again until the condition holds; false when it does not within the limit.
[[nodiscard]] bool Eventually(const std::function<bool()>& condition,
                              std::chrono::seconds limit = std::chrono::seconds(20));

[[nodiscard]] std::string ReadFile(const std::filesystem::path& file);

/// Every write to this path fails for want of space. It is no file that could be made by mistake.
[[nodiscard]] std::string FullDisk();

/// A new folder, removed at the end; the runtime folder of the processes under test.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] std::filesystem::path operator/(const std::string& sName) const {
    return m_folder / sName;
  }
  [[nodiscard]] const std::filesystem::path& Path() const { return m_folder; }

 private:
  std::filesystem::path m_folder;
};

/// A program under test. Its standard output and error go to files in its folder, the output to the
/// given descriptor instead if there is one. It is killed at the latest when this goes.
class ChildProcess {
 public:
  ChildProcess(const TemporaryFolder& folder, const std::string& sProgram,
               const std::vector<std::string>& arguments, int standardOutput = -1);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  void Signal(int nSignal) const;

  /// The exit code; 128 and the signal's number when one has ended it; -1 when it goes on running.
  [[nodiscard]] int Wait();
  [[nodiscard]] bool IsRunning();

  [[nodiscard]] std::string Output() const { return ReadFile(m_output); }
  [[nodiscard]] std::string Errors() const { return ReadFile(m_errors); }

 private:
  std::filesystem::path m_output;
  std::filesystem::path m_errors;
  pid_t m_pid;
  int m_nExitCode = -1;
};

}  // namespace quillorbit::test
