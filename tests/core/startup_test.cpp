#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/program.h"

namespace quillorbit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* sDeviceTest =
    "SetupDiGetClassDevsA {781EF630-72B2-11D2-B852-00C04FAD5101}, none, 0, 18";

Lines WholeStart() {
  Lines lines = {"PrevInstance",
                 "GetWindow 1001, 4",
                 "LoadImageA 4194304, AAA, 1, 32, 33, 32768",
                 "SendMessageA 1001, 128, 1, 132",  // its own top owner: twice
                 "SendMessageA 1001, 128, 1, 132",
                 "LoadImageA 4194304, AAA, 1, 16, 17, 32768",
                 "SendMessageA 1001, 128, 0, 116",
                 "SendMessageA 1001, 128, 0, 116",
                 "xml.load C:\\Games\\Quillorbit.setup",
                 sDeviceTest,
                 "SetupDiDestroyDeviceInfoList 77",
                 "CreateFileA \\\\.\\vJoyQuillorbit, 2147483648, 0, 0, 3, 0, 0",
                 "Shell_NotifyIconW 0, 936, 1002, 116, message 512, icon 116, tip ",
                 "Shell_NotifyIconW 4, 936, 1002, 116",
                 "item0.Visible = 1",
                 "item0.Caption = &Quit",
                 "Shell_NotifyIconW 1, 936, 1002, 116, tip Quillorbit"};
  for (const Lines& more :
       {IconCalls("OK", 200), Lines{"txtServerPort.Text = 5000", "sldFilter.Min = 1",
                                    "sldFilter.Max = 30", "sldFilter.Value = 30"}})
    lines.insert(lines.end(), more.begin(), more.end());
  for (int i = 0; i < 16; ++i) {
    const std::string sLamp = "lblButton" + std::to_string(i);
    lines.push_back(sLamp + ".Caption = " + (i < 9 ? "0" : "") + std::to_string(i + 1));
    lines.push_back(sLamp + ".BackColor = 16777215");
  }
  const Lines rest = {"chkDebug.Value = 0",
                      "lblStatic1.Caption = Port:",
                      "lblStatic2.Caption = Sensibility:",
                      "Command",
                      "frmMain.Width = 12060",
                      "frmMain.Height = 7005",
                      "picSurface.Visible = 0",
                      "lblFilterLabel.Caption = Filter: ",
                      "lblPacketLabel.Caption = Packets received: ",
                      "lblXLabel.Caption = X:",
                      "lblYLabel.Caption = Y:",
                      "lblZLabel.Caption = Z:",
                      "lblZrLabel.Caption = Zr:",
                      "lblButtonsLabel.Caption = Buttons: ",
                      "lblFilter.Caption = 30",
                      "lblPacket.Caption = 0 (0/s)",
                      "lblX.Caption = 0 (0)",
                      "lblY.Caption = 0 (0)",
                      "lblZ.Caption = 0",
                      "lblZr.Caption = 0",
                      "lblButtons.Caption = 0",
                      "timer0.Interval = 1000",
                      "timer0.Enabled = 1",
                      "CreateMutexA 0, 0, QuillorbitMutex",
                      "CreateMutexA 0, 0, Global\\QuillorbitMutex",
                      "sckUDP.Protocol = 1",
                      "sckUDP.Bind 5000",
                      "frmMain.Show"};
  lines.insert(lines.end(), rest.begin(), rest.end());
  return lines;
}

Lines Boxes(const Lines& lines) {
  Lines boxes;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(boxes),
               [](const std::string& s) { return s.starts_with("MsgBox"); });
  return boxes;
}

struct StartupTest : testing::Test {
  Lines Load() {
    p.Take();
    p.main.Form_Load();
    return p.Take();
  }
  Program p;
};

TEST_F(StartupTest, RunsEveryStepInOrder) { EXPECT_EQ(Load(), WholeStart()); }

TEST_F(StartupTest, AnyFailingCallShowsOneBoxAndTheNextStepRuns) {
  const Lines whole = WholeStart();
  for (std::size_t k = 0; k < whole.size(); ++k) {
    Program broken;
    broken.Take();
    broken.platform.log.FailAt(k + 1);
    broken.main.Form_Load();
    const Lines lines = broken.Take();

    // Up to the failing call all is the same; then comes the box, then the steps after it. The rest
    // of the failed step is left out: at most 31 calls, where the first lamp fails.
    const std::string sBox = "MsgBox Could not listen on port 5000 | 64 | Server bind problem";
    ASSERT_GT(lines.size(), k + 1) << whole[k];
    EXPECT_TRUE(std::equal(lines.begin(), lines.begin() + static_cast<long>(k) + 1, whole.begin()));
    EXPECT_EQ(lines[k + 1], sBox) << whole[k];
    const std::size_t nRest = lines.size() - k - 2;
    EXPECT_TRUE(
        std::equal(lines.rbegin(), lines.rbegin() + static_cast<long>(nRest), whole.rbegin()))
        << whole[k];
    EXPECT_LE(whole.size() - k - 1 - nRest, 31U) << whole[k];
    EXPECT_TRUE(lines.back() == "frmMain.Show" || whole[k] == "frmMain.Show") << whole[k];
  }
}

TEST_F(StartupTest, SecondCopyBringsTheFirstToTheFrontAndTouchesNothingElse) {
  p.platform.process.bPrevInstance = true;
  p.platform.windows.windows = {{1, "Quillorbit", "Other"},
                                {2, "quillorbit", "ThunderRT6FormDC"},
                                {3, "Sys Tray Interface", "ThunderRT6FormDC"},
                                {4, "Quillorbit - No signal", "ThunderRT6FormDC", false},
                                {5, "Quillorbit", "ThunderRT6FormDC"}};
  EXPECT_THAT(Load(), ElementsAre("PrevInstance", "frmMain.Caption = ", "EnumWindows 1001",
                                  "ShowWindow 4, 9", "ShowWindow 4, 5", "SetForegroundWindow 4",
                                  "frmMain.Unload", "sckUDP.Close"));
  EXPECT_EQ(p.platform.Window().sClass, "ThunderRT6FormDC");
  EXPECT_TRUE(p.platform.Window().bUnloaded);
  EXPECT_FALSE(p.platform.Window().bVisible);
}

TEST_F(StartupTest, WithoutAJoystickItSaysSoAndEnds) {
  p.platform.StoreProfile({{"msg1", "Schluss"}});
  const std::string sBox =
      "MsgBox Could not open virtual joystick device\r\nSchluss | 64 | Virtual Joystick Error";
  p.platform.device.bPresent = false;
  const Lines lines = Load();
  EXPECT_THAT(Lines(lines.end() - 5, lines.end()),
              ElementsAre(sDeviceTest, sBox, "frmMain.Unload", "sckUDP.Close", "End"));
  EXPECT_EQ(p.platform.toolkit.pTray, nullptr);

  Program inUse;
  inUse.platform.device.bInUse = true;
  inUse.main.Form_Load();
  EXPECT_THAT(Boxes(inUse.Take()), testing::SizeIs(1));
  EXPECT_TRUE(inUse.platform.Window().bUnloaded);
}

TEST_F(StartupTest, PortInUseLeavesTheProgramRunningWithoutASignal) {
  p.platform.StoreProfile({{"port", "6000"}, {"msg3", "Kein Port"}});
  p.platform.udpSockets.heldPorts = {6000};
  const Lines lines = Load();
  EXPECT_THAT(Boxes(lines), ElementsAre("MsgBox Kein Port 6000 | 64 | Server bind problem"));
  EXPECT_EQ(lines.back(), "frmMain.Show");
  p.platform.tmrCheck().Elapse();
  EXPECT_EQ(p.platform.Window().Caption(), "Quillorbit - No signal");
}

TEST_F(StartupTest, UnusableFilterSettingsShowABoxForEachFilter) {
  for (const char* sSamples : {"0", "-30"}) {
    Program program;
    program.platform.StoreProfile({{"samples", sSamples}});
    program.main.Form_Load();
    EXPECT_THAT(Boxes(program.Take()), testing::SizeIs(2)) << sSamples;
    EXPECT_EQ(program.platform.Socket().lBound, 5000);
    EXPECT_EQ(program.platform.Get<fakes::FakeSlider>("sldFilter").iValue, 1);
    EXPECT_EQ(program.platform.Caption("lblFilter"), sSamples);
  }
  for (const char* sSamples : {"31", "2147483647"}) {
    Program program;
    program.platform.StoreProfile({{"samples", sSamples}});
    program.main.Form_Load();
    EXPECT_THAT(Boxes(program.Take()), IsEmpty()) << sSamples;
    EXPECT_EQ(program.platform.Get<fakes::FakeSlider>("sldFilter").iValue, 30);
    EXPECT_EQ(program.platform.Caption("lblFilter"), sSamples);
  }
}

TEST_F(StartupTest, ProfileOutOfRangeKeepsWhatWasRead) {
  p.platform.StoreProfile({{"port", "6000"}, {"samples", "1e10"}, {"debug", "1"}});
  EXPECT_THAT(Boxes(Load()),
              ElementsAre("MsgBox Could not listen on port 6000 | 64 | Server bind problem"));
  EXPECT_EQ(p.platform.Socket().lBound, 6000);
  EXPECT_EQ(p.platform.Get<fakes::FakeCheckBox>("chkDebug").iValue, 0);
}

TEST_F(StartupTest, TakesTheSettingsOfTheProfileAndWritesNothing) {
  p.platform.StoreProfile(
      {{"port", "6000"}, {"samples", "10"}, {"debug", "1"}, {"msg12", "Grad:"}});
  const auto stored = p.platform.xml.store.files.at(fakes::FakePlatform::sProfile);
  Load();
  EXPECT_EQ(p.platform.Get<fakes::FakeTextBox>("txtServerPort").sText, "6000");
  EXPECT_EQ(p.platform.Get<fakes::FakeSlider>("sldFilter").iValue, 10);
  EXPECT_EQ(p.platform.Get<fakes::FakeCheckBox>("chkDebug").iValue, 1);
  EXPECT_EQ(p.platform.Caption("lblStatic2"), "Grad:");
  EXPECT_EQ(p.platform.xml.store.files.at(fakes::FakePlatform::sProfile), stored);
}

TEST_F(StartupTest, OnlyTheExactSwitchKeepsTheDesignedSize) {
  const auto sizes = [](const std::string& sCommand) {
    Program program;
    program.platform.process.sCommand = sCommand;
    program.main.Form_Load();
    const Lines lines = program.Take();
    return std::count_if(lines.begin(), lines.end(), [](const std::string& s) {
      return s == "frmMain.Width = 12060" || s == "frmMain.Height = 7005";
    });
  };
  EXPECT_EQ(sizes("video"), 0);
  for (const char* sCommand : {"", "Video", "video ", " video", "\"video\""})
    EXPECT_EQ(sizes(sCommand), 2) << sCommand;
}

TEST_F(StartupTest, NothingRunsOnceABoxLetTheProgramEnd) {
  p.platform.udpSockets.heldPorts = {5000};
  p.platform.StoreProfile({{"samples", "0"}});
  p.platform.toolkit.whileBoxIsOpen = [&] {
    p.platform.Window().Close(platform::UnloadReason::AppWindows);
  };
  const Lines lines = Load();
  EXPECT_THAT(Boxes(lines), testing::SizeIs(1));
  EXPECT_EQ(lines.back(), "CloseHandle 42");
  EXPECT_FALSE(p.platform.Window().bVisible);
}

}  // namespace
}  // namespace quillorbit
