#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/stop_signal.h"

namespace quillorbit::tools {

/// The nearest-rank quantile of values in ascending order: the smallest of them that at least
/// `nPermille` in a thousand of them do not exceed. There must be one value at least.
[[nodiscard]] Clock::duration Quantile(std::span<const Clock::duration> sorted, int nPermille);

/// Keeps what was sent and what arrived of numbered datagrams.
class LatencyLog {
 public:
  /// The next number, from 1 on, has been sent.
  void Sent(Clock::time_point time);

  /// A number that was not sent is counted separately.
  void Arrived(std::int32_t nNumber, Clock::time_point time);

  [[nodiscard]] std::size_t Sent() const { return m_sent.size(); }
  [[nodiscard]] std::size_t Arrived() const { return m_latencies.size(); }
  [[nodiscard]] std::size_t Lost() const { return Sent() - Arrived(); }
  /// Those that arrived after a higher number.
  [[nodiscard]] std::size_t OutOfOrder() const { return m_nOutOfOrder; }
  [[nodiscard]] std::size_t Duplicated() const { return m_nDuplicated; }
  [[nodiscard]] std::size_t Foreign() const { return m_nForeign; }

  /// For people, two or three lines.
  [[nodiscard]] std::string Summary() const;

  /// "sent,arrived,lost,reordered,min,median,p90,p99,p99.9,max", times in microseconds; where
  /// nothing arrived the times are left out.
  [[nodiscard]] std::string CsvLine() const;

 private:
  struct Datagram {
    Clock::time_point sent;
    bool bArrived = false;
  };

  [[nodiscard]] std::vector<std::string> Microseconds() const;

  std::vector<Datagram> m_sent;
  std::vector<Clock::duration> m_latencies;
  std::size_t m_nHighest = 0;
  std::size_t m_nOutOfOrder = 0;
  std::size_t m_nDuplicated = 0;
  std::size_t m_nForeign = 0;
};

}  // namespace quillorbit::tools
