#pragma once

#include <cerrno>
#include <cstddef>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace quillorbit::fakes {

/// What crossed the seam, in order, as readable lines. It can make any one call fail.
class CallLog {
 public:
  /// Notes a call, or throws instead where it was told to.
  template <class... Parts>
  void Call(const Parts&... parts) {
    if (m_muted) return;
    Note(parts...);
    if (m_calls.size() != m_failAt) return;
    m_failAt = 0;
    throw std::system_error(EIO, std::generic_category());
  }

  /// Notes what cannot fail.
  template <class... Parts>
  void Note(const Parts&... parts) {
    if (m_muted) return;
    std::ostringstream text;
    (text << ... << parts);
    m_calls.push_back(text.str());
  }

  [[nodiscard]] const std::vector<std::string>& Calls() const { return m_calls; }
  /// The calls since the last time this was asked.
  std::vector<std::string> Take() { return std::exchange(m_calls, {}); }

  /// Makes the nth call from the last Take on fail, once; counted from 1.
  void FailAt(std::size_t nCall) { m_failAt = nCall; }
  void Mute(bool bMuted) { m_muted = bMuted; }  ///< muted, it also costs no memory

 private:
  std::vector<std::string> m_calls;
  std::size_t m_failAt = 0;
  bool m_muted = false;
};

}  // namespace quillorbit::fakes
