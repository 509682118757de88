#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace quillorbit {

/// A short text put together in place, without the heap: room for three 32-bit numbers and the
/// punctuation around them. What does not fit is cut off.
class ShortText {
 public:
  ShortText& operator<<(std::string_view sText) {
    const std::size_t nTaken = std::min(sText.size(), m_text.size() - m_nLength);
    std::copy_n(sText.begin(), nTaken, m_text.begin() + m_nLength);
    m_nLength += nTaken;
    return *this;
  }

  /// In decimal, with a minus sign when negative and no padding.
  ShortText& operator<<(std::int32_t lValue) {
    std::array<char, 11> digits;  // "-2147483648"
    const auto end = std::to_chars(digits.begin(), digits.end(), lValue).ptr;
    return *this << std::string_view(digits.begin(), end);
  }

  operator std::string_view() const { return {m_text.data(), m_nLength}; }

 private:
  std::array<char, 48> m_text;
  std::size_t m_nLength = 0;
};

}  // namespace quillorbit
