#include "platform/linux/process/process.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "linux/support.h"

namespace quillorbit::linux_tests {
namespace {

using linux_adapter::LinuxProcess;

char TellPrevInstance(LinuxProcess& process) { return process.PrevInstance() ? 'y' : 'n'; }

/// A copy of this program that waits for its start signal, gives one answer, whether another one
/// was running unless told otherwise, and then runs until it is killed.
class Copy {
 public:
  explicit Copy(const std::function<char(LinuxProcess&)>& answer = TellPrevInstance) {
    if (pipe(m_start.data()) != 0 || pipe(m_answer.data()) != 0) throw std::runtime_error("pipe");
    m_pid = fork();
    if (m_pid != 0) return;
    char c = 0;
    if (read(m_start[0], &c, 1) != 1) _exit(1);
    constexpr std::array argv = {"quillorbit"};
    LinuxProcess process(1, argv.data());
    c = answer(process);
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
  [[nodiscard]] char Answer() const {
    char c = '?';
    EXPECT_EQ(read(m_answer[0], &c, 1), 1);
    return c;
  }
  char StartAndAsk() const {
    Start();
    return Answer();
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
                          [](const Copy& copy) { return copy.Answer() == 'n'; }),
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

/// How many sockets have that abstract address, as any process of the machine sees it.
int CountAddress(const std::string& sAddress) {
  std::ifstream sockets("/proc/net/unix");
  int nCount = 0;
  for (std::string sLine; std::getline(sockets, sLine);)
    if (sLine.ends_with(" @" + sAddress)) ++nCount;
  return nCount;
}

class NamedMutex : public testing::Test {
 protected:
  static platform::MutexHandle Create(LinuxProcess& process, const std::string& sName) {
    return process.CreateMutexA(nullptr, false, sName.c_str());
  }
  [[nodiscard]] std::string Session(const std::string& sName) const {
    return m_runtime.Path().string() + '/' + sName;
  }

  const TemporaryRuntimeFolder m_runtime;
  const std::array<const char*, 1> m_argv = {"quillorbit"};
  LinuxProcess m_self{1, m_argv.data()};
  const std::string m_sMachine = "Global\\quillorbit test " + std::to_string(getpid());
};

TEST_F(NamedMutex, IsThereForEveryProcessUntilItsOwnIsKilled) {
  Copy holder([this](LinuxProcess& process) {
    return Create(process, "test") != 0 && Create(process, m_sMachine) != 0 ? 'y' : 'n';
  });
  ASSERT_EQ(holder.StartAndAsk(), 'y');
  EXPECT_EQ(CountAddress(Session("test")) + CountAddress(m_sMachine), 2);
  EXPECT_EQ(Create(m_self, "test"), 0U);  // there already, and nothing of this process's
  {
    const TemporaryRuntimeFolder otherSession;
    EXPECT_NE(Create(m_self, "test"), 0U);
    EXPECT_EQ(Create(m_self, m_sMachine), 0U);
  }
  holder.Kill();
  EXPECT_EQ(CountAddress(Session("test")) + CountAddress(m_sMachine), 0);
  EXPECT_NE(Create(m_self, m_sMachine), 0U);
}

TEST_F(NamedMutex, HasAHandleForEachCallAndOneAddressWhichHasToFit) {
  const std::string sLongest(107 - Session("").size(), 'x');
  std::set<platform::MutexHandle> handles = {0};
  for (const std::string& sName :
       {std::string("a"), std::string("a"), std::string("/a"), m_sMachine, m_sMachine, sLongest})
    EXPECT_TRUE(handles.insert(Create(m_self, sName)).second) << sName;
  for (const std::string& sAddress : {Session("a"), Session("/a"), m_sMachine, Session(sLongest)})
    EXPECT_EQ(CountAddress(sAddress), 1) << sAddress;

  for (const std::string& sName :
       {std::string(), std::string("Global\\"), sLongest + 'x', m_sMachine + std::string(101, 'x')})
    EXPECT_EQ(Create(m_self, sName), 0U) << sName;
  EXPECT_EQ(m_self.CreateMutexA(nullptr, false, nullptr), 0U);
}

TEST(Process, DrawsNumbersFromZeroToOneAndOthersInEveryRun) {
  constexpr std::array argv = {"quillorbit"};
  LinuxProcess process(1, argv.data()), nextRun(1, argv.data());
  EXPECT_NE(process.Rnd(), nextRun.Rnd());
  std::set<int> tenths;
  for (int i = 0; i < 1000; ++i) tenths.insert(static_cast<int>(std::floor(process.Rnd() * 10)));
  EXPECT_EQ(tenths, (std::set{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

}  // namespace
}  // namespace quillorbit::linux_tests
