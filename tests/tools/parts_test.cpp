#include <gtest/gtest.h>

#include "tools/latency.h"

namespace quillorbit::tools {
namespace {

using std::chrono::microseconds, std::chrono::seconds;

TEST(Latency, CountsEachFateOfADatagram) {
  LatencyLog log;
  for (int n = 0; n < 5; ++n) log.Sent(Clock::time_point{seconds(1)});
  int nTime = 0;
  for (const std::int32_t nNumber : {1, 3, 2, 3, 5, 6, -1})
    log.Arrived(nNumber, Clock::time_point{seconds(1) + microseconds(nTime += 10)});
  EXPECT_EQ(log.CsvLine(), "5,4,1,1,10.0,20.0,50.0,50.0,50.0,50.0\n");
}

TEST(Latency, TakesTheNearestRankOfWhatArrived) {
  LatencyLog log;
  for (int n = 1; n <= 2001; ++n) log.Sent(Clock::time_point{});
  for (int n = 1; n <= 2001; ++n) log.Arrived(n, Clock::time_point{microseconds(2002 - n)});
  EXPECT_EQ(log.CsvLine(), "2001,2001,0,0,1.0,1001.0,1801.0,1981.0,1999.0,2001.0\n");
}

}  // namespace
}  // namespace quillorbit::tools
