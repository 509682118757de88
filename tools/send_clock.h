#pragma once

#include <cstdint>

#include "tools/stop_signal.h"

namespace quillorbit::tools {

/// When the datagrams of a steady rate are due. The times are computed from the beginning and not
/// from one another, so the rate does not drift. After a stall it goes on from now: what was missed
/// is not made up for.
class SendClock {
 public:
  SendClock(int nRate, Clock::time_point start) : m_nRate(nRate), m_base(start) {}

  [[nodiscard]] Clock::time_point Due() const { return After(m_nSinceBase); }

  /// One has been sent: on to the next.
  void Advance(Clock::time_point now);

 private:
  [[nodiscard]] Clock::time_point After(std::int64_t nDatagrams) const;

  int m_nRate;
  Clock::time_point m_base;
  std::int64_t m_nSinceBase = 0;
};

}  // namespace quillorbit::tools
