#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/program.h"

namespace quillorbit {
namespace {

constexpr const char* sCentred = "4B 00 4B 00 4B 00 4B 00 00 00 00 00";

struct StatusTest : testing::Test {
  StatusTest() { p.Start(); }

  Lines Readouts(const std::string& sPacket, const std::string& sX) {
    return {"lblFilter.Caption = 30", "lblPacket.Caption = " + sPacket,
            "lblX.Caption = " + sX,   "lblY.Caption = 0 (0)",
            "lblZ.Caption = 0",       "lblZr.Caption = 0",
            "lblButtons.Caption = 3"};
  }
  void ArriveTimes(int n) {
    for (int i = 0; i < n; ++i) p.platform.Arrive({.x = 100, .b = 3});
  }
  std::string RateAfterTick() {
    p.platform.tmrCheck2().Elapse();
    ArriveTimes(1);
    return p.platform.Caption("lblPacket");
  }
  Program p;
};

TEST_F(StatusTest, LostSignalCentresTheStickOnceAndShowsIt) {
  ArriveTimes(1);
  p.Take();
  p.platform.tmrCheck().Elapse();
  Lines expected = IconCalls("ERROR", 300);
  for (const std::string& sCall :
       {std::string("Shell_NotifyIconW 1, 936, 1002, 116, balloon Quillorbit: No signal, 2, 0"),
        std::string("frmMain.Caption = Quillorbit - No signal"),
        std::string("Shell_NotifyIconW 1, 936, 1002, 116, tip Quillorbit - No signal"),
        Report(sCentred)})
    expected.push_back(sCall);
  for (int i = 0; i < 16; ++i)
    expected.push_back("lblButton" + std::to_string(i) + ".BackColor = 16777215");
  const Lines readouts = Readouts("1 (0/s)", "100 (50)");
  expected.insert(expected.end(), readouts.begin(), readouts.end());
  EXPECT_EQ(p.Take(), expected);

  p.platform.tmrCheck().Elapse();
  EXPECT_EQ(p.Take(), readouts);
  p.platform.Window().Paint();
  EXPECT_EQ(p.Take(), readouts);
}

TEST_F(StatusTest, NextDatagramBringsTheSignalBackBeforeTheWatchdogRestarts) {
  p.platform.tmrCheck().Elapse();
  p.Hide();
  p.platform.Arrive({.x = 100});
  Lines expected = IconCalls("OK", 200);
  expected.insert(expected.begin(), Report("32 00 00 00 00 00 00 00 00 00 00 00"));
  for (const char* sCall :
       {"frmMain.Caption = Quillorbit", "Shell_NotifyIconW 1, 936, 1002, 116, tip Quillorbit",
        "Shell_NotifyIconW 1, 936, 1002, 116, balloon Quillorbit: Mobile transmitting, 1, 0",
        "timer0.Enabled = 0", "timer0.Enabled = 1"})
    expected.push_back(sCall);
  EXPECT_EQ(p.Take(), expected);
  p.platform.Window().Paint();  // with a signal the next datagram redraws
  EXPECT_EQ(p.Take(), Lines{});
}

TEST_F(StatusTest, LostSignalCentresTheStickWhateverElseFails) {
  for (const std::size_t nFailing : {1U, 6U, 7U, 8U}) {  // icon, balloon, caption, tip
    Program program;
    program.Start();
    program.platform.log.FailAt(nFailing);
    program.platform.tmrCheck().Elapse();
    EXPECT_THAT(program.Take(), testing::Contains(Report(sCentred)));
  }
}

TEST_F(StatusTest, RateIsTheCountsDistanceBetweenTicks) {
  ArriveTimes(50);
  EXPECT_EQ(RateAfterTick(), "51 (0/s)");  // nothing to compare with yet
  ArriveTimes(24);
  EXPECT_EQ(RateAfterTick(), "76 (25/s)");
  p.platform.Arrive({.x = 40000});  // a failure: the count starts again from 0
  ArriveTimes(3);
  EXPECT_EQ(RateAfterTick(), "4 (72/s)");  // 75 - 3
  p.platform.tmrCheck().Elapse();
  EXPECT_EQ(RateAfterTick(), "5 (0/s)");  // forgotten with the signal
}

}  // namespace
}  // namespace quillorbit
