#include <csignal>
#include <regex>

#include "e2e/desktop.h"

namespace quillorbit::test {
namespace {

using ProgramTest = Desktop;

constexpr const char* sNoSignal = "^Quillorbit - No signal$";
constexpr const char* sQuestion = "^Quillorbit$";

TEST_F(ProgramTest, DatagramsDriveTheJoystickAndALostSignalCentresIt) {
  StartAll();
  ASSERT_TRUE(WindowAppears(sNoSignal));
  const std::size_t nBefore = Reports().size();
  const std::vector<std::byte> bytes(65507);
  for (const std::size_t nSize : {0U, 19U, 21U, 65507U}) Send(std::span(bytes).first(nSize));
  for (int i = 0; i < 2; ++i) Send({.x = 150, .y = -150, .z = 75, .zr = 149, .b = -2147483647});
  ASSERT_TRUE(WindowAppears("^Quillorbit$"));
  ASSERT_TRUE(WindowAppears(sNoSignal));
  auto reports = Reports();
  reports.erase(reports.begin(), reports.begin() + static_cast<long>(nBefore));
  EXPECT_THAT(reports, testing::ElementsAre(JoystickReport{75, -75, 75, 149, -2147483647},
                                            JoystickReport{112, -112, 75, 149, -2147483647},
                                            JoystickReport{75, 75, 75, 75, 0}));
}

TEST_F(ProgramTest, SecondCopyBringsBackTheCoveredOrHiddenWindow) {
  StartAll();
  const ChildProcess cover(m_folder, "display",
                           {"-title", "About Quillorbit", "-size", "900x700", "xc:grey"});
  Press("^About Quillorbit$", "Shift_L");
  StartSecondCopy();
  for (const char* sAnswer : {"Right Return", "Escape"}) {
    AskToClose();
    Answer(sQuestion, sAnswer);
    ASSERT_TRUE(Eventually([] { return !HasWindow(sMainWindow); }));
    EXPECT_TRUE(Listens());
    EXPECT_FALSE(HasWindow(sMainWindow));
    StartSecondCopy();
  }
  AskToClose();
  Answer(sQuestion, "Return");
  EXPECT_EQ(m_process->Wait(), 0);
}

TEST_F(ProgramTest, PanelTakesWhatIsGoodAndSavesIt) {
  StartAll();
  const auto enter = [](const std::string& sPort, const std::string& sKey) {
    Press(sMainWindow, "ctrl+a " + std::regex_replace(sPort, std::regex("."), "$& ") + sKey);
  };
  const std::string sProfile = ReadFile(m_profile);
  const PortHolder held;
  for (const std::string& sPort :
       {std::string("abc"), std::string("65536"), std::to_string(held.nPort)})
    enter(sPort, "Tab");  // each time the focus stays, and the old port comes back
  EXPECT_EQ(ReadFile(m_profile), sProfile);
  Press(sMainWindow, "Return");
  EXPECT_TRUE(ProfileContains("<port>" + std::to_string(m_nPort) + "<"));
  EXPECT_TRUE(Listens());

  m_nPort = PortHolder().nPort;
  enter(std::to_string(m_nPort), "Return");
  EXPECT_TRUE(Listens());
  Press(sMainWindow, "Tab Left Left Tab space");
  EXPECT_TRUE(
      ProfileContains("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<quillorbit_profile>\n  <port>" +
                      std::to_string(m_nPort) +
                      "</port>\n  <samples>28</samples>\n  <debug>1</debug>\n  <msg0>Could"));
}

TEST_F(ProgramTest, DriverThatHangsOrDiesCostsItsReportsOnly) {
  StartAll();
  EXPECT_TRUE(Listens());
  const auto sendMany = [&] {
    for (int i = 0; i < 5000; ++i) Send({.z = 2});
    EXPECT_TRUE(WindowAppears(sNoSignal));  // nothing waits for the driver
  };
  m_driver->Signal(SIGSTOP);
  sendMany();
  m_driver->Signal(SIGCONT);
  EXPECT_TRUE(Listens());
  m_driver->Signal(SIGKILL);
  EXPECT_EQ(m_driver->Wait(), 128 + SIGKILL);
  sendMany();
}

TEST_F(ProgramTest, EndsInOrderWhenTheDisplayGoesAway) {
  StartAll();
  m_display.Kill();
  EXPECT_EQ(m_process->Wait(), 1);
  EXPECT_THAT(m_process->Errors(), testing::EndsWith("\nquillorbit: the display is gone\n"));
}

TEST_F(ProgramTest, BrokenProfileIsLeftAloneAndThePortInUseIsReported) {
  const PortHolder held(5000);  // the port where there is no profile
  WriteProfile(ReadFile(m_profile).substr(0, 40));
  StartDriver();
  StartProgram();
  Answer("^Server bind problem$", "Return");
  EXPECT_TRUE(WindowAppears(sMainWindow));
  EndProgram();
  EXPECT_EQ(ReadFile(m_profile).size(), 40U);
}

}  // namespace
}  // namespace quillorbit::test
