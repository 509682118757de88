#include <array>
#include <cstdio>

#include "measure.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr int nSeconds = 20;

}  // namespace

void View() {
  std::printf("\nThe 3D view while a phone sends, %d s each, beside the hidden window\n", nSeconds);
  std::printf("  %-22s %10s %6s %10s %8s %8s %8s %10s\n", "", "datagrams", "lost", "median us",
              "p99", "max", "frames", "CPU ms/s");
  for (const int nRate : {60, 200, 1000}) {
    for (const Subject eSubject : {Subject::Hidden, Subject::Model}) {
      const Times times = Measure(eSubject, nRate, nRate * nSeconds);
      std::printf("  %4d/s %-15s %10d %6.0f %10.1f %8.1f %8.1f %8.0f %10.0f\n", nRate,
                  eSubject == Subject::Hidden ? "hidden" : "3D view", nRate * nSeconds, times.dLost,
                  times.dMedian, times.dP99, times.dMost, times.dFrames,
                  times.dCpuMilliseconds / nSeconds);
    }
  }
}

}  // namespace quillorbit::bench
