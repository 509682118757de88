#pragma once

namespace quillorbit::bench {

enum class Subject { BareLoop, Hidden, Text, Model };

/// Times in microseconds; what the subject showed and used while the datagrams came.
struct Times {
  double dLost, dMedian, dP90, dP99, dMost;
  double dFrames;           ///< of the 3D view, on the screen
  double dCpuMilliseconds;  ///< of all its threads
};

/// Sends datagrams at a rate, and measures from the sending to the report at the user-space driver.
[[nodiscard]] Times Measure(Subject eSubject, int nRate, int nDatagrams);

}  // namespace quillorbit::bench
