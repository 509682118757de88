#pragma once

#include <cstdint>
#include <vector>

#include "intake/MotionData.h"
#include "tools/send_clock.h"
#include "tools/send_options.h"

namespace quillorbit::tools {

/// Which datagram is sent when, and when it ends.
class SendSchedule {
 public:
  /// Reads the file that is to be played. It begins now, or when Begin is called.
  explicit SendSchedule(const SendOptions& options);

  void Begin();

  /// Whether there is no further datagram.
  [[nodiscard]] bool Ended() const;
  /// When the requested time is over; in the past when something else ended it.
  [[nodiscard]] Clock::time_point End() const;

  [[nodiscard]] Clock::time_point Due() const { return m_clock.Due(); }
  [[nodiscard]] MotionData Motion() const;
  /// To be called when the current datagram has been sent.
  void Advance();

  /// The time that the datagrams so far cover: from the first to the newest, and one interval.
  [[nodiscard]] double Seconds() const;

 private:
  [[nodiscard]] bool TimeIsOver() const;

  const SendOptions& m_options;
  std::vector<MotionData> m_recorded;
  Clock::time_point m_start;
  Clock::time_point m_newest;
  SendClock m_clock;
  std::int64_t m_nSent = 0;
};

}  // namespace quillorbit::tools
