#include <gtest/gtest.h>

#include "core/program.h"

namespace quillorbit {
namespace {

struct ShutdownTest : testing::Test {
  ShutdownTest() { p.Start(); }
  static Lines AfterTheQuestion();
  Program p;
};

const Lines teardown = {"sckUDP.Close", "frmSysTray.Unload", "Shell_NotifyIconW 2, 936, 1002, 116",
                        "CloseHandle 42"};

Lines ShutdownTest::AfterTheQuestion() {
  Lines lines = teardown;
  lines.insert(lines.begin(), "MsgBox Quit Quillorbit? | 36 | Quillorbit");
  return lines;
}

TEST_F(ShutdownTest, CloseCommandAsksAndNoHides) {
  p.platform.toolkit.eAnswer = platform::IDNO;
  p.platform.Window().Close(platform::UnloadReason::ControlMenu);
  EXPECT_EQ(p.Take(), (Lines{"MsgBox Quit Quillorbit? | 36 | Quillorbit", "frmMain.Hide"}));
  p.platform.Arrive({.x = 150, .y = 150, .z = 150, .zr = 150, .b = 0});
  EXPECT_EQ(p.Take().at(0), Report("4B 00 4B 00 96 00 96 00 00 00 00 00"));
}

TEST_F(ShutdownTest, CloseCommandAsksAndYesUnloads) {
  p.platform.toolkit.eAnswer = platform::IDYES;
  p.platform.Window().Close(platform::UnloadReason::ControlMenu);
  EXPECT_EQ(p.Take(), AfterTheQuestion());
  EXPECT_TRUE(p.platform.Window().bUnloaded);
}

TEST_F(ShutdownTest, OtherReasonsDoNotAsk) {
  p.platform.Window().Close(platform::UnloadReason::AppWindows);
  EXPECT_EQ(p.Take(), teardown);
}

TEST_F(ShutdownTest, SessionThatEndsDuringTheQuestionUnloadsOnce) {
  p.platform.toolkit.eAnswer = platform::IDYES;
  p.platform.toolkit.whileBoxIsOpen = [&] {
    p.platform.Window().Close(platform::UnloadReason::AppWindows);
  };
  p.platform.Window().Close(platform::UnloadReason::ControlMenu);
  EXPECT_EQ(p.Take(), AfterTheQuestion());
}

TEST_F(ShutdownTest, FailingStepDoesNotKeepTheDeviceOpen) {
  p.platform.log.FailAt(1);
  p.platform.Window().Close(platform::UnloadReason::AppWindows);
  EXPECT_EQ(p.Take(), teardown);
}

}  // namespace
}  // namespace quillorbit
