#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "measure.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr int nDatagrams = 10'000;
constexpr int nRate = 1000;  // a second
constexpr int nRounds = 3;

constexpr std::array subjects = {Subject::BareLoop, Subject::Hidden, Subject::Text, Subject::Model};
constexpr std::array sNames = {"bare epoll loop", "quillorbit, window hidden",
                               "quillorbit, text display", "quillorbit, 3D view"};

/// The round in the middle, field by field; what was lost is added up.
Times Middle(const std::vector<Times>& rounds) {
  const auto middle = [&](double Times::*field) {
    std::vector<double> values;
    for (const Times& times : rounds) values.push_back(times.*field);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
  };
  double dLost = 0;
  for (const Times& times : rounds) dLost += times.dLost;
  return {dLost,
          middle(&Times::dMedian),
          middle(&Times::dP90),
          middle(&Times::dP99),
          middle(&Times::dMost),
          middle(&Times::dFrames),
          middle(&Times::dCpuMilliseconds)};
}

}  // namespace

void Latency() {
  std::array<std::vector<Times>, subjects.size()> results;
  for (int i = 0; i < nRounds; ++i)
    for (std::size_t k = 0; k < subjects.size(); ++k)
      results[k].push_back(Measure(subjects[k], nRate, nDatagrams));

  std::printf(
      "\nSending to report at the user-space driver, %d datagrams at %d/s, "
      "middle of %d rounds in turn\n",
      nDatagrams, nRate, nRounds);
  std::printf("  %-28s %6s %10s %8s %8s %8s %14s %10s\n", "", "lost", "median us", "p90", "p99",
              "max", "ratio: median", "p99");
  const Times bare = Middle(results[0]);
  for (std::size_t k = 0; k < subjects.size(); ++k) {
    const Times times = Middle(results[k]);
    std::printf("  %-28s %6.0f %10.1f %8.1f %8.1f %8.1f %14.2f %10.2f\n", sNames[k], times.dLost,
                times.dMedian, times.dP90, times.dP99, times.dMost, times.dMedian / bare.dMedian,
                times.dP99 / bare.dP99);
  }
}

}  // namespace quillorbit::bench
