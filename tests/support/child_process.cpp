#include "support/child_process.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillorbit::test {

bool Eventually(const std::function<bool()>& condition, std::chrono::seconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return std::move(text).str();
}

std::string FullDisk() {
  if (!std::filesystem::is_character_file("/dev/full"))
    throw std::runtime_error("/dev/full is no device here");
  return "/dev/full";
}

TemporaryFolder::TemporaryFolder() {
  std::string sTemplate = std::filesystem::temp_directory_path() / "quillorbit-XXXXXX";
  if (mkdtemp(sTemplate.data()) == nullptr) throw std::runtime_error("mkdtemp");
  m_folder = sTemplate;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

ChildProcess::ChildProcess(const TemporaryFolder& folder, const std::string& sProgram,
                           const std::vector<std::string>& arguments, int standardOutput) {
  static int nChildren = 0;
  const std::string sName = "child" + std::to_string(++nChildren);
  m_output = folder / (sName + ".out");
  m_errors = folder / (sName + ".err");
  std::vector<std::string> texts{sProgram};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& sText : texts) argv.push_back(sText.data());
  argv.push_back(nullptr);

  m_pid = fork();
  if (m_pid < 0) throw std::runtime_error("fork");
  if (m_pid > 0) return;
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
  if (standardOutput < 0) standardOutput = open(m_output.c_str(), flags, 0600);
  dup2(standardOutput, STDOUT_FILENO);
  dup2(open(m_errors.c_str(), flags, 0600), STDERR_FILENO);
  setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  execvp(sProgram.c_str(), argv.data());
  _exit(127);
}

ChildProcess::~ChildProcess() {
  if (!IsRunning()) return;
  kill(m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
}

void ChildProcess::Signal(int nSignal) const { kill(m_pid, nSignal); }

bool ChildProcess::IsRunning() {
  int nStatus = 0;
  if (m_nExitCode >= 0) return false;
  if (waitpid(m_pid, &nStatus, WNOHANG) != m_pid) return true;
  m_nExitCode = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128 + WTERMSIG(nStatus);
  return false;
}

int ChildProcess::Wait() {
  return Eventually([&] { return !IsRunning(); }) ? m_nExitCode : -1;
}

}  // namespace quillorbit::test
