#include "base/Numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace quillorbit {
namespace {

template <class Int>
Int RoundTo(double dValue) {
  const double dRounded = std::nearbyint(dValue);  // the default rounding mode: halves to even
  if (!(dRounded >= std::numeric_limits<Int>::min() && dRounded <= std::numeric_limits<Int>::max()))
    throw std::overflow_error("Overflow");
  return static_cast<Int>(dRounded);
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// The parts of the numeral that a text begins with, as lengths and positions in that text.
struct Numeral {
  bool bFound = false;
  std::size_t nLength = 0;    ///< of the whole numeral
  std::size_t nMantissa = 0;  ///< where sign and mantissa end
};

Numeral FindNumeral(std::string_view sText) {
  std::size_t i = 0;
  const auto skipSign = [&] {
    if (i < sText.size() && (sText[i] == '+' || sText[i] == '-')) ++i;
  };
  const auto skipDigits = [&] {
    const std::size_t first = i;
    while (i < sText.size() && IsDigit(sText[i])) ++i;
    return i - first;
  };

  skipSign();
  std::size_t digits = skipDigits();
  if (i < sText.size() && sText[i] == '.') {
    ++i;
    digits += skipDigits();
  }
  if (digits == 0) return {};

  const std::size_t mantissaEnd = i;
  if (i < sText.size() && (sText[i] == 'e' || sText[i] == 'E')) {
    ++i;
    skipSign();
    if (skipDigits() == 0) i = mantissaEnd;  // an "e" without digits is not part of the number
  }
  return {true, i, mantissaEnd};
}

/// Whether a numeral that no 64-bit float can hold is too large, rather than too small. Its
/// mantissa is not zero.
bool IsHuge(std::string_view sNumeral, std::size_t nMantissa) {
  const std::string_view mantissa = sNumeral.substr(0, nMantissa);
  const auto point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
  const auto leading = static_cast<long long>(mantissa.find_first_of("123456789"));

  long long exponent = 0;
  if (nMantissa < sNumeral.size()) {
    std::string_view text = sNumeral.substr(nMantissa + 1);
    if (text.front() == '+') text.remove_prefix(1);
    const auto read = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (read.ec != std::errc{}) return text.front() != '-';
  }
  return exponent > leading - point;
}

}  // namespace

std::int16_t ToInt16(std::int32_t lValue) {
  if (lValue < std::numeric_limits<std::int16_t>::min() ||
      lValue > std::numeric_limits<std::int16_t>::max())
    throw std::overflow_error("Overflow");
  return static_cast<std::int16_t>(lValue);
}

std::int16_t RoundToInt16(double dValue) { return RoundTo<std::int16_t>(dValue); }

std::int32_t RoundToInt32(double dValue) { return RoundTo<std::int32_t>(dValue); }

double ReadNumber(std::string_view sText) {
  std::string text(sText);
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\n'; });

  const Numeral numeral = FindNumeral(text);
  if (!numeral.bFound) return 0;
  const char* first = text.data() + (text.front() == '+' ? 1 : 0);  // from_chars takes no plus
  double value = 0;
  if (std::from_chars(first, text.data() + numeral.nLength, value).ec == std::errc{}) return value;

  const bool bHuge = IsHuge(std::string_view(text).substr(0, numeral.nLength), numeral.nMantissa);
  const double magnitude = bHuge ? std::numeric_limits<double>::infinity() : 0.0;
  return text.front() == '-' ? -magnitude : magnitude;
}

bool IsNumeric(std::string_view sText) {
  const std::size_t first = sText.find_first_not_of(' ');
  if (first == std::string_view::npos) return false;
  const std::string_view text = sText.substr(first, sText.find_last_not_of(' ') - first + 1);
  const Numeral numeral = FindNumeral(text);
  return numeral.bFound && numeral.nLength == text.size();
}

std::string Decimal(std::int32_t lValue) { return std::to_string(lValue); }

}  // namespace quillorbit
