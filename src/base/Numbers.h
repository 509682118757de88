#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillorbit {

// Every conversion of the program goes through these: none wraps, and a value that does not fit
// the target throws std::overflow_error.

[[nodiscard]] std::int16_t ToInt16(std::int32_t lValue);

/// To the nearest integer, halves to the even neighbour (2.5 gives 2, 3.5 gives 4). A NaN throws
/// too.
[[nodiscard]] std::int16_t RoundToInt16(double dValue);
[[nodiscard]] std::int32_t RoundToInt32(double dValue);

/// The number that a text begins with: blanks, tabs and line feeds are ignored wherever they are;
/// then comes an optional sign, digits with an optional decimal point, and an optional
/// exponent. A text that begins with anything else is 0; a number too large for a 64-bit float is
/// infinite.
[[nodiscard]] double ReadNumber(std::string_view sText);

/// Whether a text is one number as a whole, with nothing but blanks around it.
[[nodiscard]] bool IsNumeric(std::string_view sText);

/// In decimal, with a minus sign when negative and no padding.
[[nodiscard]] std::string Decimal(std::int32_t lValue);

}  // namespace quillorbit
