#include <gtest/gtest.h>

#include "tools/latency.h"
#include "tools/patterns.h"
#include "tools/send_clock.h"

namespace quillorbit::tools {
namespace {

using std::chrono::microseconds, std::chrono::seconds;

TEST(Patterns, ShowEverythingTheyPromise) {
  constexpr std::array axes{&MotionData::x, &MotionData::y, &MotionData::z, &MotionData::zr};
  // One axis after the other reaches both ends while the rest are level.
  for (int n = 0; n < 8; ++n) {
    MotionData expected{75, 75, 75, 75, 0};
    expected.*axes[static_cast<std::size_t>(n / 2)] = n % 2 == 0 ? 0 : 150;
    EXPECT_EQ(MotionAt(Pattern::sweep, 2 * n + 1), expected) << n;
  }
  EXPECT_EQ(MotionAt(Pattern::circle, 0), (MotionData{150, 75, 75, 75, 0}));
  EXPECT_EQ(MotionAt(Pattern::circle, 3), (MotionData{75, 0, 75, 75, 0}));
  for (int n = 0; n < 32; ++n) {
    const auto pressed = static_cast<std::uint32_t>(MotionAt(Pattern::buttons, n / 4.0 + 0.1).b);
    EXPECT_EQ(pressed, 1U << n);
  }
}

TEST(SendClock, KeepsTheRateWithoutDriftAndWithoutAFlood) {
  const Clock::time_point start;
  SendClock slow(60, start), fast(10'000, start);
  for (int n = 0; n < 3600; ++n) slow.Advance(slow.Due() + microseconds(16'000));
  EXPECT_EQ(slow.Due(), start + seconds(60));
  slow.Advance(start + seconds(65));
  EXPECT_EQ(slow.Due(), start + seconds(65) + std::chrono::nanoseconds(16'666'666));
  fast.Advance(start + microseconds(9'900));
  EXPECT_EQ(fast.Due(), start + microseconds(100));
}

TEST(Latency, CountsEachFateOfADatagram) {
  LatencyLog log;
  for (int n = 0; n < 5; ++n) log.Sent(Clock::time_point{seconds(1)});
  int nTime = 0;
  for (const std::int32_t nNumber : {1, 3, 2, 3, 5, 6, -1})
    log.Arrived(nNumber, Clock::time_point{seconds(1) + microseconds(nTime += 10)});
  EXPECT_EQ(log.CsvLine(), "5,4,1,1,10.0,20.0,50.0,50.0,50.0\n");
}

}  // namespace
}  // namespace quillorbit::tools
