#include "tools/send_clock.h"

#include <algorithm>

namespace quillorbit::tools {

Clock::time_point SendClock::After(std::int64_t nDatagrams) const {
  // Whole seconds apart, so that no product overflows.
  using std::chrono::nanoseconds, std::chrono::seconds;
  return m_base + seconds(nDatagrams / m_nRate) +
         nanoseconds(1'000'000'000 * (nDatagrams % m_nRate) / m_nRate);
}

void SendClock::Advance(Clock::time_point now) {
  // At high rates a sleep is regularly late by more than an interval; that much is caught up with.
  constexpr Clock::duration tolerated = std::chrono::milliseconds(10);
  const Clock::duration interval = std::chrono::seconds(1) / m_nRate;
  ++m_nSinceBase;
  if (now - Due() <= std::max(interval, tolerated)) return;
  m_base = now;
  m_nSinceBase = 1;
}

}  // namespace quillorbit::tools
