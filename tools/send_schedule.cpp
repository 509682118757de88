#include "tools/send_schedule.h"

#include "tools/recorded_file.h"

namespace quillorbit::tools {
namespace {

double SecondsBetween(Clock::time_point from, Clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

}  // namespace

SendSchedule::SendSchedule(const SendOptions& options)
    : m_options(options), m_start(Clock::now()), m_clock(options.nRate, m_start) {
  if (options.sFile) m_recorded = ReadRecordedFile(*options.sFile);
  Begin();
}

void SendSchedule::Begin() {
  m_start = m_newest = Clock::now();
  m_clock = SendClock(m_options.nRate, m_start);
  m_nSent = 0;
}

bool SendSchedule::TimeIsOver() const {
  return m_options.dSeconds && SecondsBetween(m_start, Due()) >= *m_options.dSeconds;
}

bool SendSchedule::Ended() const {
  if (m_options.nCount && m_nSent >= *m_options.nCount) return true;
  if (m_options.bOnce && m_nSent >= static_cast<std::int64_t>(m_recorded.size())) return true;
  return TimeIsOver();
}

Clock::time_point SendSchedule::End() const {
  if (!TimeIsOver()) return m_start;
  return m_start + std::chrono::duration_cast<Clock::duration>(
                       std::chrono::duration<double>(*m_options.dSeconds));
}

MotionData SendSchedule::Motion() const {
  if (m_recorded.empty()) return MotionAt(m_options.pattern, SecondsBetween(m_start, Due()));
  return m_recorded[static_cast<std::size_t>(m_nSent) % m_recorded.size()];
}

void SendSchedule::Advance() {
  ++m_nSent;
  m_newest = Clock::now();
  m_clock.Advance(m_newest);
}

double SendSchedule::Seconds() const {
  return m_nSent == 0 ? 0 : SecondsBetween(m_start, m_newest) + 1.0 / m_options.nRate;
}

}  // namespace quillorbit::tools
