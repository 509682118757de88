#include "platform/linux/process.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "linux/support.h"

namespace quillorbit::linux_tests {
namespace {

using linux_adapter::LinuxProcess;

/// A copy of this program that waits for its start signal, tells whether another one was running
/// and then runs until it is killed.
class Copy {
 public:
  Copy() {
    if (pipe(m_start.data()) != 0 || pipe(m_answer.data()) != 0) throw std::runtime_error("pipe");
    m_pid = fork();
    if (m_pid != 0) return;
    char c = 0;
    if (read(m_start[0], &c, 1) != 1) _exit(1);
    constexpr std::array argv = {"quillorbit"};
    const LinuxProcess process(1, argv.data());
    c = process.PrevInstance() ? 'y' : 'n';
    if (write(m_answer[1], &c, 1) != 1) _exit(1);
    for (;;) pause();
  }
  ~Copy() {
    Kill();
    for (const int fd : {m_start[0], m_start[1], m_answer[0], m_answer[1]}) close(fd);
  }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;

  void Start() const { EXPECT_EQ(write(m_start[1], "s", 1), 1); }
  [[nodiscard]] char PrevInstance() const {
    char c = '?';
    EXPECT_EQ(read(m_answer[0], &c, 1), 1);
    return c;
  }
  char StartAndAsk() const {
    Start();
    return PrevInstance();
  }
  void Kill() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      waitpid(m_pid, nullptr, 0);
    }
    m_pid = 0;
  }

 private:
  std::array<int, 2> m_start{};
  std::array<int, 2> m_answer{};
  pid_t m_pid = 0;
};

std::string OutputOf(const std::string& sCommand) {
  FILE* const pPipe = popen(sCommand.c_str(), "r");
  std::string sOutput;
  for (int c = std::fgetc(pPipe); c != EOF; c = std::fgetc(pPipe)) sOutput += static_cast<char>(c);
  pclose(pPipe);
  return sOutput;
}

TEST(PrevInstance, IsTrueWhileAnotherCopyRunsHoweverThatEnds) {
  const TemporaryRuntimeFolder runtime;
  Copy first, second, third, fourth;
  EXPECT_EQ(first.StartAndAsk(), 'n');
  EXPECT_EQ(second.StartAndAsk(), 'y');
  second.Kill();
  EXPECT_EQ(third.StartAndAsk(), 'y');  // the second one's end took nothing from the first
  third.Kill();
  first.Kill();
  EXPECT_EQ(fourth.StartAndAsk(), 'n');
}

TEST(PrevInstance, IsFalseForExactlyOneOfManyThatStartTogether) {
  const TemporaryRuntimeFolder runtime;
  std::array<Copy, 12> copies;
  for (const Copy& copy : copies) copy.Start();
  EXPECT_EQ(std::count_if(copies.begin(), copies.end(),
                          [](const Copy& copy) { return copy.PrevInstance() == 'n'; }),
            1);
}

TEST(PrevInstance, IsFalseWhereThereCanBeNoLockFile) {
  const TemporaryRuntimeFolder runtime;
  setenv("XDG_RUNTIME_DIR", "/dev/null/nowhere", 1);
  Copy first, second;
  EXPECT_EQ(first.StartAndAsk(), 'n');
  EXPECT_EQ(second.StartAndAsk(), 'n');
}

TEST(Process, TellsThePlaceAndNameOfItsProgramFileAndItsWholeArguments) {
  const TemporaryRuntimeFolder runtime;
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  const std::string sFolder = runtime.Path();
  constexpr std::array argv = {"quillorbit"};
  const LinuxProcess self(1, argv.data());  // another program file than the copies below
  EXPECT_EQ(self.Command(), "");

  struct Case {
    const char* sFile;
    const char* sArguments;
    const char* sExpected;
  };
  for (const Case& c :
       {Case{"quillorbit", "--describe", "|quillorbit|--describe|0|/"},
        Case{"Quill orbit.v2.bin", "--describe -platform x 'two words'",
             "|Quill orbit.v2|--describe -platform x two words|0|/"},
        Case{".hidden", "--describe '' \xC3\xA4", "|.hidden|--describe  \xC3\xA4|0|/"}}) {
    const auto copy = runtime / c.sFile;
    std::filesystem::copy_file(program, copy);
    EXPECT_EQ(OutputOf("'" + copy.string() + "' " + c.sArguments), sFolder + c.sExpected);
    std::filesystem::remove(copy);
  }
}

}  // namespace
}  // namespace quillorbit::linux_tests
