#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

#include "tools/latency.h"
#include "tools/patterns.h"
#include "tools/report_text.h"
#include "tools/send_clock.h"

namespace quillorbit::tools {
namespace {

using std::chrono::microseconds, std::chrono::milliseconds, std::chrono::seconds;

constexpr std::array axes{&MotionData::x, &MotionData::y, &MotionData::z, &MotionData::zr};

TEST(Patterns, StayInRangeAndNeverJump) {
  for (const NamedPattern& each : namedPatterns) {
    SCOPED_TRACE(each.sName);
    EXPECT_EQ(PatternOfName(each.sName), each.pattern);
    // At 1000/s the fastest of them moves by about a tenth of a step.
    MotionData last = MotionAt(each.pattern, 0);
    for (int n = 1; n <= 300'000; ++n) {
      const MotionData motion = MotionAt(each.pattern, n / 1000.0);
      for (const auto axis : axes) {
        ASSERT_GE(motion.*axis, 0) << n;
        ASSERT_LE(motion.*axis, 150) << n;
        ASSERT_LE(std::abs(motion.*axis - last.*axis), 1) << n;
      }
      last = motion;
    }
  }
  EXPECT_FALSE(PatternOfName("Steady"));
}

TEST(Patterns, ShowEverythingTheyPromise) {
  // One axis after the other reaches both ends while the rest are level.
  for (int nAxis = 0; nAxis < 4; ++nAxis)
    for (const int nEnd : {0, 150}) {
      MotionData expected{75, 75, 75, 75, 0};
      expected.*axes[static_cast<std::size_t>(nAxis)] = nEnd;
      EXPECT_EQ(MotionAt(Pattern::sweep, 4 * nAxis + (nEnd == 0 ? 1 : 3)), expected) << nAxis;
    }
  EXPECT_EQ(MotionAt(Pattern::circle, 0), (MotionData{150, 75, 75, 75, 0}));
  EXPECT_EQ(MotionAt(Pattern::circle, 3), (MotionData{75, 0, 75, 75, 0}));
  std::uint32_t pressed = 0;
  for (int n = 0; n < 32; ++n) {
    const MotionData motion = MotionAt(Pattern::buttons, n / 4.0 + 0.1);
    EXPECT_EQ(static_cast<std::uint32_t>(motion.b), 1U << n);
    pressed |= static_cast<std::uint32_t>(MotionAt(Pattern::demo, n / 2.0 + 0.1).b);
  }
  EXPECT_EQ(pressed, 0xFFFFFFFFU);
}

TEST(SendClock, KeepsTheRateWithoutDriftAndWithoutAFlood) {
  const Clock::time_point start{seconds(1000)};
  SendClock clock(60, start);
  for (int n = 0; n < 60 * 3600; ++n) clock.Advance(clock.Due() + microseconds(900));
  EXPECT_EQ(clock.Due(), start + seconds(3600));

  const Clock::time_point late = clock.Due() + seconds(5);
  clock.Advance(late);
  EXPECT_EQ(clock.Due(), late + std::chrono::nanoseconds(16'666'666));

  SendClock fast(10000, start);  // sleeps that are some intervals late are caught up with
  fast.Advance(start + milliseconds(3));
  EXPECT_EQ(fast.Due(), start + microseconds(100));
}

TEST(Latency, QuantilesAreNearestRank) {
  std::vector<Clock::duration> sorted;
  for (const int n : {15, 20, 35, 40, 50}) sorted.emplace_back(n);
  const struct {
    int nPercent, nExpected;
  } cases[] = {{0, 15}, {20, 15}, {21, 20}, {30, 20}, {40, 20}, {50, 35}, {81, 50}, {100, 50}};
  for (const auto& each : cases)
    EXPECT_EQ(Quantile(sorted, each.nPercent).count(), each.nExpected) << each.nPercent;
}

TEST(Latency, CountsEachFateOfADatagram) {
  LatencyLog log;
  const Clock::time_point start{seconds(1)};
  EXPECT_EQ(log.CsvLine(), "0,0,0,0,,,,,\n");
  for (int n = 0; n < 5; ++n) log.Sent(start);
  const struct {
    std::int32_t nNumber;
    int nMicroseconds;
  } arrivals[] = {{1, 10}, {3, 20}, {2, 30}, {3, 40}, {5, 50}, {6, 60}, {-1, 70}};
  for (const auto& each : arrivals)
    log.Arrived(each.nNumber, start + microseconds(each.nMicroseconds));
  EXPECT_EQ(log.CsvLine(), "5,4,1,1,10.0,20.0,50.0,50.0,50.0\n");
  EXPECT_EQ(log.Summary(),
            "sent 5, arrived 4, lost 1, out of order 1, duplicated 1\n"
            "reports of datagrams that were not sent here: 2\n"
            "microseconds: min 10.0, median 20.0, p90 50.0, p99 50.0, max 50.0\n");
}

TEST(LiveLine, ShowsAReportInTheWidthOfTheTerminal) {
  const JoystickReport report{.x = 0, .y = 75, .z = 150, .zr = 32767, .b = 2};
  EXPECT_EQ(LiveLine(report, 200),
            "X   0 #------  Y  75 ---#---  Z 150 ------#  Zr 32767 ------#  buttons 2");
  EXPECT_EQ(LiveLine(report, 9), "X   0 #--");
}

}  // namespace
}  // namespace quillorbit::tools
