#include "platform/linux/process/process.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <vector>

#include "linux/support.h"

namespace quillorbit::linux_tests {
namespace {

namespace fs = std::filesystem;

/// Copies of this program that print what they know about themselves (services_main.cpp) and run
/// until they are destroyed.
class Copies : public testing::Test {
 protected:
  using Copy = std::unique_ptr<test::ChildProcess>;
  Copy Start(const fs::path& program, const std::vector<std::string>& arguments = {}) const {
    std::vector<std::string> all{"--describe"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return std::make_unique<test::ChildProcess>(m_runtime, program, all);
  }
  static std::string Description(const Copy& copy) {
    EXPECT_TRUE(test::Eventually([&] { return copy->Output().ends_with('\n'); }));
    return copy->Output();
  }
  /// Whether the copy recognised another one.
  static bool HasPrevious(const Copy& copy) { return Description(copy).ends_with("|1\n"); }

  const TemporaryRuntimeFolder m_runtime;
  const fs::path m_self = fs::read_symlink("/proc/self/exe");
  const fs::path m_program = m_runtime / "Quill orbit.v2.bin";
};

TEST_F(Copies, RecogniseTheFirstByThePathOfTheirProgramFile) {
  fs::copy_file(m_self, m_program);
  fs::create_symlink(m_program, m_runtime / "link");
  Copy first = Start(m_runtime / "link", {"-platform", "x y", "", "\xC3\xA4"});
  EXPECT_EQ(Description(first),
            m_runtime.Path().string() + "|Quill orbit.v2|--describe -platform x y  \xC3\xA4|0\n");
  EXPECT_TRUE(HasPrevious(Start(m_program)));
  EXPECT_FALSE(HasPrevious(Start(m_self)));  // another program file
  fs::copy_file(m_self, m_runtime / "update");
  fs::rename(m_runtime / "update", m_program);
  EXPECT_TRUE(HasPrevious(Start(m_program)));
  first.reset();
  EXPECT_FALSE(HasPrevious(Start(m_program)));
}

TEST_F(Copies, RecogniseOneFirstOfManyThatStartTogether) {
  std::vector<Copy> copies(8);
  for (Copy& copy : copies) copy = Start(m_self);
  EXPECT_EQ(std::ranges::count_if(copies, HasPrevious), 7);
}

/// How many sockets have that abstract address, as any process of the machine sees it.
int CountAddress(const std::string& sAddress) {
  std::ifstream sockets("/proc/net/unix");
  int nCount = 0;
  for (std::string sLine; std::getline(sockets, sLine);) nCount += sLine.ends_with(" @" + sAddress);
  return nCount;
}

TEST(Process, NamesMutexesForTheSessionAndTheMachineWhileItLives) {
  const TemporaryRuntimeFolder runtime;
  const std::string sSession = runtime.Path().string() + '/';
  const std::string sMachine = "Global\\quillorbit test " + std::to_string(getpid());
  {
    linux_adapter::LinuxProcess process(0, nullptr), other(0, nullptr);
    std::set<platform::MutexHandle> handles = {0};
    for (const std::string& sName : {std::string("a"), std::string("a"), sMachine})
      EXPECT_TRUE(handles.insert(process.CreateMutexA(nullptr, false, sName.c_str())).second);
    for (const std::string& sName : {std::string("a"), sMachine, std::string("Global\\")})
      EXPECT_EQ(other.CreateMutexA(nullptr, false, sName.c_str()), 0U) << sName;
    for (const std::string& sAddress : {sSession + 'a', sMachine})
      EXPECT_EQ(CountAddress(sAddress), 1) << sAddress;
  }
  EXPECT_EQ(CountAddress(sSession + 'a') + CountAddress(sMachine), 0);
}

}  // namespace
}  // namespace quillorbit::linux_tests
