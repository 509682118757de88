#include <gmock/gmock.h>

#include <sys/socket.h>

#include "e2e/desktop.h"

namespace quillorbit::test {
namespace {

/// The setup panel as its user meets it. The port box has the focus when the window comes.
struct PanelTest : Desktop {
  /// Whether datagrams to the port reach the driver.
  bool Listens(int nPort) {
    const std::size_t nBefore = Reports().size();
    return Eventually([&] {
      Send(nPort, MotionData{.z = 42}.ToBytes());
      const auto reports = Reports();
      return reports.size() > nBefore && reports.back().z == 42;
    });
  }
  bool PortIsSaved(const std::string& sPort) {
    return Eventually([&] { return ProfileElement("port") == sPort; });
  }
};

TEST_F(PanelTest, EnterBindsANewPortAndSavesTheWholeProfile) {
  StartAll();
  const int nPort = PortHolder(AF_INET6, 0).Port();
  EnterPort(std::to_string(nPort), "Return");
  EXPECT_TRUE(PortIsSaved(std::to_string(nPort)));
  EXPECT_TRUE(Listens(nPort));
  EXPECT_EQ(Profile(), R"(<?xml version="1.0" encoding="UTF-8"?>
<quillorbit_profile>
  <port>)" + std::to_string(nPort) +
                           R"(</port>
  <samples>30</samples>
  <debug>0</debug>
  <msg0>Could not open virtual joystick device</msg0>
  <msg1>The program will now exit</msg1>
  <msg2>Virtual Joystick Error</msg2>
  <msg3>Could not listen on port</msg3>
  <msg4>Server bind problem</msg4>
  <msg5>Mobile transmitting</msg5>
  <msg6>No signal</msg6>
  <msg7>Quit</msg7>
  <msg8>Filter: </msg8>
  <msg9>Packets received: </msg9>
  <msg10>Buttons: </msg10>
  <msg11>Port:</msg11>
  <msg12>Sensibility:</msg12>
</quillorbit_profile>
)");
  EndProgram();
}

TEST_F(PanelTest, RefusedPortKeepsTheFocusAndTheOldPort) {
  StartAll();
  const std::string sProfile = Profile();
  const PortHolder held4(AF_INET, 0), held6(AF_INET6, 0);
  // With each of them the box keeps the focus, so that the next text can be typed at once.
  for (const std::string& sText : {std::string("abc"), std::string("0"), std::string("65536"),
                                   std::string("-1"), std::string("1e9"), std::string(""),
                                   std::to_string(held4.Port()), std::to_string(held6.Port())})
    EnterPort(sText, "Tab");
  EXPECT_EQ(Profile(), sProfile);
  Press(sMainWindow, "Return");  // the old port stands in the box
  EXPECT_TRUE(Eventually([&] { return ProfileElement("samples") == "30"; }));
  EXPECT_EQ(ProfileElement("port"), std::to_string(m_nPort));
  EXPECT_TRUE(Listens(m_nPort));
  EndProgram();
}

TEST_F(PanelTest, NumbersInOtherClothesAreTheirPorts) {
  StartAll();
  const std::string sPort = std::to_string(m_nPort);
  for (const std::string& sText : {sPort + ".4", " " + sPort + " ", "+" + sPort, sPort + "e0"}) {
    EnterPort(sText, "Return");
    EXPECT_TRUE(PortIsSaved(sPort)) << sText;
    EXPECT_TRUE(Listens(m_nPort)) << sText;
  }
  EndProgram();
}

TEST_F(PanelTest, KeyboardReachesSliderAndCheckBoxInOrder) {
  StartAll();
  Press(sMainWindow, "Tab Left Left");
  EXPECT_TRUE(Eventually([&] { return ProfileElement("samples") == "28"; }));
  Press(sMainWindow, "Tab space");
  EXPECT_TRUE(Eventually([&] { return ProfileElement("debug") == "1"; }));
  Press(sMainWindow, "space");
  EXPECT_TRUE(Eventually([&] { return ProfileElement("debug") == "0"; }));
  EndProgram();
}

TEST_F(PanelTest, PressOnTheCheckBoxIsNoClickWhileThePortIsBad) {
  StartAll();
  EnterPort("abc", "Left");
  ClickFromBelow(760, 13);  // the check box
  EnterPort(std::to_string(m_nPort), "Return");
  EXPECT_TRUE(Eventually([&] { return ProfileElement("debug") == "0"; }));
  ClickFromBelow(760, 13);
  EXPECT_TRUE(Eventually([&] { return ProfileElement("debug") == "1"; }));
  EndProgram();
}

TEST_F(PanelTest, PortInUseAtTheStartIsSaidAndCanBeChanged) {
  for (const int nFamily : {AF_INET, AF_INET6}) {
    const PortHolder held(nFamily, 0);
    WriteProfile("<quillorbit_profile><port>" + std::to_string(held.Port()) +
                 "</port></quillorbit_profile>");
    if (!m_driver) StartDriver();
    StartProgram();
    Answer("^Server bind problem$", "Return");
    EnterPort(std::to_string(m_nPort), "Return");
    EXPECT_TRUE(PortIsSaved(std::to_string(m_nPort)));
    EXPECT_TRUE(Listens(m_nPort));
    EndProgram();
  }
}

TEST_F(PanelTest, ProfileThatCannotBeWrittenStaysWhole) {
  StartDriver();
  // No file of this process may grow: like a full disk.
  StartProgram({"sh", "-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\""});
  const std::string sProfile = Profile();
  const int nPort = PortHolder(AF_INET6, 0).Port();
  EnterPort(std::to_string(nPort), "Return");
  EXPECT_TRUE(Listens(nPort));  // it holds for this run
  Press(sMainWindow, "Tab Tab Left");
  EXPECT_EQ(Profile(), sProfile);
  EXPECT_TRUE(m_process->IsRunning());
  EndProgram();
  std::size_t nLeftovers = 0;
  for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
    if (entry.path().filename().string().find("setup") != std::string::npos) ++nLeftovers;
  EXPECT_EQ(nLeftovers, 1U);
}

}  // namespace
}  // namespace quillorbit::test
