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

bool Eventually(const std::function<bool()>& condition, std::chrono::seconds limit,
                const std::function<void()>& pause) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    pause ? pause() : std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

std::string ReadFile(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return std::move(text).str();
}

void WriteFile(const std::filesystem::path& file, std::string_view sContent) {
  if (!(std::ofstream(file, std::ios::binary) << sContent << std::flush))
    throw std::runtime_error("cannot write " + file.string());
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
                           const std::vector<std::string>& arguments) {
  static int nChildren = 0;
  const std::string sNumber = std::to_string(++nChildren);
  m_output = folder / ("output" + sNumber);
  m_errors = folder / ("errors" + sNumber);
  std::vector<const char*> argv{sProgram.c_str()};
  for (const std::string& sArgument : arguments) argv.push_back(sArgument.c_str());
  argv.push_back(nullptr);

  m_pid = fork();
  if (m_pid < 0) throw std::runtime_error("fork");
  if (m_pid > 0) return;
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
  dup2(open(m_output.c_str(), flags, 0600), STDOUT_FILENO);
  dup2(open(m_errors.c_str(), flags, 0600), STDERR_FILENO);
  setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  execvp(sProgram.c_str(), const_cast<char* const*>(argv.data()));
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
