#include "tools/latency.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

namespace quillorbit::tools {
namespace {

constexpr std::array permilles{0, 500, 900, 990, 999, 1000};
constexpr std::array<const char*, permilles.size()> quantileNames{"min", "median", "p90",
                                                                  "p99", "p99.9",  "max"};

}  // namespace

Clock::duration Quantile(std::span<const Clock::duration> sorted, int nPermille) {
  const std::size_t nRank = (sorted.size() * static_cast<std::size_t>(nPermille) + 999) / 1000;
  return sorted[std::max<std::size_t>(nRank, 1) - 1];
}

void LatencyLog::Sent(Clock::time_point time) { m_sent.push_back({time}); }

void LatencyLog::Arrived(std::int32_t nNumber, Clock::time_point time) {
  if (nNumber < 1 || static_cast<std::size_t>(nNumber) > m_sent.size()) {
    ++m_nForeign;
    return;
  }
  const auto n = static_cast<std::size_t>(nNumber);
  Datagram& datagram = m_sent[n - 1];
  if (datagram.bArrived) {
    ++m_nDuplicated;
    return;
  }
  datagram.bArrived = true;
  m_latencies.push_back(time - datagram.sent);
  if (n < m_nHighest) ++m_nOutOfOrder;
  m_nHighest = std::max(m_nHighest, n);
}

std::vector<std::string> LatencyLog::Microseconds() const {
  std::vector<std::string> texts(permilles.size());
  if (m_latencies.empty()) return texts;
  std::vector<Clock::duration> sorted = m_latencies;
  std::ranges::sort(sorted);
  for (std::size_t i = 0; i < permilles.size(); ++i) {
    const std::chrono::duration<double, std::micro> time = Quantile(sorted, permilles[i]);
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << time.count();
    texts[i] = text.str();
  }
  return texts;
}

std::string LatencyLog::Summary() const {
  std::ostringstream text;
  text << "sent " << Sent() << ", arrived " << Arrived() << ", lost " << Lost() << ", out of order "
       << OutOfOrder() << ", duplicated " << Duplicated() << '\n';
  if (Foreign() > 0) text << "reports of datagrams that were not sent here: " << Foreign() << '\n';
  if (m_latencies.empty()) return text.str();
  const char* sSeparator = "microseconds: ";
  const std::vector<std::string> times = Microseconds();
  for (std::size_t i = 0; i < times.size(); ++i) {
    text << sSeparator << quantileNames[i] << ' ' << times[i];
    sSeparator = ", ";
  }
  text << '\n';
  return text.str();
}

std::string LatencyLog::CsvLine() const {
  std::ostringstream text;
  text << Sent() << ',' << Arrived() << ',' << Lost() << ',' << OutOfOrder();
  for (const std::string& sTime : Microseconds()) text << ',' << sTime;
  text << '\n';
  return text.str();
}

}  // namespace quillorbit::tools
