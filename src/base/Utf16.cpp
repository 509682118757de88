#include "base/Utf16.h"

#include <cwchar>
#include <locale>

namespace quillorbit {
namespace {

using Converter = std::codecvt<char16_t, char8_t, std::mbstate_t>;

const Converter& TheConverter() { return std::use_facet<Converter>(std::locale::classic()); }

/// Converts with `convert`, one of the converter's two ways; a unit at which it stops is replaced.
template <class To, class From, class Convert>
std::basic_string<To> Converted(std::basic_string_view<From> sFrom,
                                std::basic_string_view<To> sReplacement, Convert convert) {
  std::basic_string<To> sTo;
  const From* p = sFrom.data();
  const From* const pEnd = p + sFrom.size();
  while (p != pEnd) {
    To buffer[256];
    To* pWritten = buffer;
    const From* const pStart = p;
    std::mbstate_t state{};
    convert(state, pStart, pEnd, p, buffer, buffer + std::size(buffer), pWritten);
    sTo.append(buffer, pWritten);
    if (p != pStart) continue;
    sTo += sReplacement;
    ++p;
  }
  return sTo;
}

}  // namespace

std::u16string ToUtf16(std::string_view sUtf8) {
  const std::u8string sFrom(sUtf8.begin(), sUtf8.end());
  return Converted<char16_t, char8_t>(sFrom, u"\uFFFD",
                                      [](auto& state, auto pFrom, auto pFromEnd, auto& pFromNext,
                                         auto pTo, auto pToEnd, auto& pToNext) {
                                        return TheConverter().in(state, pFrom, pFromEnd, pFromNext,
                                                                 pTo, pToEnd, pToNext);
                                      });
}

std::string ToUtf8(std::u16string_view sUtf16) {
  const std::u8string sTo = Converted<char8_t, char16_t>(
      sUtf16, u8"\uFFFD",
      [](auto& state, auto pFrom, auto pFromEnd, auto& pFromNext, auto pTo, auto pToEnd,
         auto& pToNext) {
        return TheConverter().out(state, pFrom, pFromEnd, pFromNext, pTo, pToEnd, pToNext);
      });
  return {sTo.begin(), sTo.end()};
}

}  // namespace quillorbit
