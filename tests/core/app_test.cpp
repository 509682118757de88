// Start, end and connection status of the whole program.

#include <algorithm>

#include "core/program.h"

namespace quillorbit {
namespace {

using testing::AllOf;
using testing::Contains;

const std::string sTray = "Shell_NotifyIconW 1, 936, 1002, 116, ";
/// The icon of a resource on the main window and in the tray.
Lines IconCalls(const std::string& sName, int iHandle) {
  const std::string sLoad = "LoadImageA 4194304, " + sName, sSet = "SendMessageA 1001, 128, ";
  const std::string sLarge = std::to_string(iHandle + 32), sSmall = std::to_string(iHandle + 16);
  return {sLoad + ", 1, 32, 33, 32768", sSet + "1, " + sLarge, sLoad + ", 1, 16, 17, 32768",
          sSet + "0, " + sSmall, sTray + "icon " + sSmall};
}

Lines WholeStart() {
  // The window is its own top owner, and gets each icon twice.
  Lines lines =
      Calls(
          "GetWindow 1001, 4; LoadImageA 4194304, AAA, 1, 32, 33, 32768; "
          "SendMessageA 1001, 128, 1, 132; SendMessageA 1001, 128, 1, 132; "
          "LoadImageA 4194304, AAA, 1, 16, 17, 32768; "
          "SendMessageA 1001, 128, 0, 116; SendMessageA 1001, 128, 0, 116; "
          "xml.load C:\\Games\\Quillorbit.setup; "
          "SetupDiGetClassDevsA 30 F6 1E 78 B2 72 D2 11 B8 52 00 C0 4F AD 51 01, none, 0, 18; "
          "SetupDiDestroyDeviceInfoList 77; "
          "CreateFileA \\\\.\\vJoyQuillorbit, 2147483648, 0, 0, 3, 0, 0; "
          "Shell_NotifyIconW 0, 936, 1002, 116, message 512, icon 116, tip ; "
          "Shell_NotifyIconW 4, 936, 1002, 116; item0.Visible 1; item0.Caption &Quit; " +
          sTray + "tip Quillorbit") +
      IconCalls("OK", 200) +
      Calls("txtServerPort.Text 5000; sldFilter.Min 1; sldFilter.Max 30; sldFilter.Value 30");
  for (int i = 0; i < 16; ++i) {
    const std::string sLamp = "lblButton" + std::to_string(i);
    lines.push_back(sLamp + ".Caption " + (i < 9 ? "0" : "") + std::to_string(i + 1));
    lines.push_back(sLamp + ".BackColor 16777215");
  }
  return lines + Calls(
                     "chkDebug.Value 0; lblStatic1.Caption Port:; lblStatic2.Caption Sensibility:; "
                     "frmMain.Width 12060; frmMain.Height 7005; picSurface.Visible 0; "
                     "lblFilterLabel.Caption Filter: ; lblPacketLabel.Caption Packets received: ; "
                     "lblXLabel.Caption X:; lblYLabel.Caption Y:; lblZLabel.Caption Z:; "
                     "lblZrLabel.Caption Zr:; lblButtonsLabel.Caption Buttons: ; "
                     "lblFilter.Caption 30; lblPacket.Caption 0 (0/s); lblX.Caption 0 (0); "
                     "lblY.Caption 0 (0); lblZ.Caption 0; lblZr.Caption 0; lblButtons.Caption 0; "
                     "timer0.Interval 1000; timer0.Enabled 1; CreateMutexA 0, 0, QuillorbitMutex; "
                     "CreateMutexA 0, 0, Global\\QuillorbitMutex; sckUDP.Protocol 1; "
                     "sckUDP.Bind 5000; frmMain.Show");
}

TEST(Startup, RunsEveryStepInOrderWhicheverFails) {
  const Lines whole = WholeStart();
  Program good;
  EXPECT_EQ(good.Start(), whole);
  for (std::size_t k = 0; k < whole.size(); ++k) {
    Program p;
    p.log.FailAt(k + 1);
    const Lines lines = p.Start();
    // Up to the failing call all is the same; then comes the box, then the steps after the failed
    // one, of which at most 31 calls are skipped: where the first lamp fails.
    ASSERT_GT(lines.size(), k + 1) << whole[k];
    const auto box = lines.begin() + static_cast<long>(k) + 1;
    EXPECT_TRUE(std::equal(lines.begin(), box, whole.begin())) << whole[k];
    EXPECT_EQ(*box, "MsgBox Could not listen on port 5000, 64, Server bind problem") << whole[k];
    EXPECT_TRUE(std::equal(box + 1, lines.end(), whole.end() - (lines.end() - box - 1)));
    EXPECT_LE(whole.size() - lines.size() + 1, 31U) << whole[k];
  }
}

TEST(Startup, SecondCopyBringsTheFirstToTheFrontAndTouchesNothingElse) {
  Program p;
  p.process.bPrevInstance = true;
  p.windows.windows = {{1, "Quillorbit", "Other"},
                       {2, "quillorbit", "ThunderRT6FormDC"},
                       {4, "Quillorbit - No signal", "ThunderRT6FormDC", false},
                       {5, "Quillorbit", "ThunderRT6FormDC"}};
  EXPECT_EQ(p.Start(),
            Calls("frmMain.Caption ; EnumWindows 1001; ShowWindow 4, 9; ShowWindow 4, 5; "
                  "SetForegroundWindow 4; frmMain.Unload; sckUDP.Close"));
}

const Lines question = {"MsgBox Quit Quillorbit?, 36, Quillorbit"};
const Lines teardown =
    Calls("sckUDP.Close; frmSysTray.Unload; Shell_NotifyIconW 2, 936, 1002, 116; CloseHandle 42");

TEST(Shutdown, OnlyTheCloseCommandAsksAndNoHides) {
  Program p;
  p.Start();
  p.toolkit.eAnswer = platform::IDNO;
  p.Window().Close(platform::UnloadReason::ControlMenu);
  EXPECT_EQ(p.Take(), question + Lines{"frmMain.Hide"});
  // The session ends while the question is open, and the socket fails to close.
  p.toolkit.eAnswer = platform::IDYES;
  p.toolkit.whileBoxIsOpen = [&] { p.Window().Close(platform::UnloadReason::AppWindows); };
  p.log.FailAt(2);
  p.Window().Close(platform::UnloadReason::ControlMenu);
  EXPECT_EQ(p.Take(), question + teardown);
}

const std::string sCentred = Report("4B 00 4B 00 4B 00 4B 00 00 00 00 00");

TEST(Status, LostSignalCentresTheStickOnceAndTheNextDatagramBringsItBack) {
  Program p;
  p.Start();
  p.Arrive({.x = 100, .b = 3});
  p.Take();
  p.tmrCheck().Elapse();
  const Lines readouts = Calls(
      "lblFilter.Caption 30; lblPacket.Caption 1 (0/s); lblX.Caption 100 (50); "
      "lblY.Caption 0 (0); lblZ.Caption 0; lblZr.Caption 0; lblButtons.Caption 3");
  EXPECT_EQ(p.Take(), IconCalls("ERROR", 300) +
                          Lines({sTray + "balloon Quillorbit: No signal, 2, 0",
                                 "frmMain.Caption Quillorbit - No signal",
                                 sTray + "tip Quillorbit - No signal", sCentred}) +
                          Lamps(0) + readouts);
  p.tmrCheck().Elapse();
  EXPECT_EQ(p.Take(), readouts);
  p.Hide();
  p.Arrive({.x = 200});
  EXPECT_EQ(p.Take(), Lines{Report("7D 00 00 00 00 00 00 00 00 00 00 00")} + IconCalls("OK", 200) +
                          Lines({"frmMain.Caption Quillorbit", sTray + "tip Quillorbit",
                                 sTray + "balloon Quillorbit: Mobile transmitting, 1, 0",
                                 "timer0.Enabled 0", "timer0.Enabled 1"}));
}

TEST(Status, LostSignalCentresTheStickAndRefreshesWhateverElseFails) {
  for (const std::size_t nFailing : {1U, 6U, 7U, 8U, 9U}) {  // icon, balloon, caption, tip, report
    Program p;
    p.Start();
    p.log.FailAt(nFailing);
    p.tmrCheck().Elapse();
    EXPECT_THAT(p.Take(), AllOf(Contains(sCentred), Contains("lblButtons.Caption 0")));
  }
}

TEST(Status, RateIsTheDistanceOfTheCountsBetweenTicks) {
  Program p;
  p.Start();
  EXPECT_EQ(p.tmrCheck2().iInterval, 1000);
  const auto rate = [&](int nDatagrams) {
    for (int i = 0; i < nDatagrams; ++i) p.Arrive({});
    p.tmrCheck2().Elapse();
    p.Arrive({});
    return p.Caption("lblPacket");
  };
  EXPECT_EQ(rate(50), "51 (0/s)");  // nothing to compare with yet
  EXPECT_EQ(rate(24), "76 (25/s)");
  p.Arrive({.x = 40000});          // a failure: the count starts again from 0
  EXPECT_EQ(rate(3), "4 (72/s)");  // 75 - 3
  p.tmrCheck().Elapse();
  EXPECT_EQ(rate(0), "5 (0/s)");  // forgotten with the signal
}

}  // namespace
}  // namespace quillorbit
