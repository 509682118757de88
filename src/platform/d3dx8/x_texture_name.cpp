#include "platform/d3dx8/x_texture_name.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quillorbit::d3dx8 {
namespace {

/// The characters 80 to 9F of code page 1252; the five that it leaves open stay control characters.
constexpr std::array<char16_t, 32> from80 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

/// How many bytes a character has whose first byte this is; 0 when it is no first byte.
std::size_t CharacterSize(unsigned char c) {
  if (c < 0x80) return 1;
  if (c < 0xC2) return 0;
  if (c < 0xE0) return 2;
  if (c < 0xF0) return 3;
  return c < 0xF5 ? 4 : 0;
}

bool IsUtf8(std::string_view s) {
  while (!s.empty()) {
    const std::size_t nSize = CharacterSize(static_cast<unsigned char>(s[0]));
    if (nSize == 0 || nSize > s.size()) return false;
    for (const char c : s.substr(1, nSize - 1))
      if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) return false;
    s.remove_prefix(nSize);
  }
  return true;
}

void AppendUtf8(std::string& s, char32_t c) {
  const auto append = [&s](char32_t byte) { s += static_cast<char>(byte); };
  if (c < 0x80) return append(c);
  if (c < 0x800) {
    append(0xC0 | c >> 6);
  } else {
    append(0xE0 | c >> 12);
    append(0x80 | (c >> 6 & 0x3F));
  }
  append(0x80 | (c & 0x3F));
}

std::string FromCodePage1252(std::string_view bytes) {
  std::string s;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    AppendUtf8(s, byte >= 0x80 && byte < 0xA0 ? from80[byte - 0x80U] : char32_t{byte});
  }
  return s;
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// A path as it is in a model, as one inside of a folder.
std::string InsideFolder(std::string_view path) {
  constexpr std::string_view separators = "/\\";
  const bool bDrive = path.size() > 1 && IsLetter(path[0]) && path[1] == ':';
  if (bDrive) path.remove_prefix(2);
  bool bOutside = bDrive || (!path.empty() && separators.find(path[0]) != path.npos);
  std::string sInside, sLast;
  while (!path.empty()) {
    const std::size_t nEnd = std::min(path.find_first_of(separators), path.size());
    const std::string_view part = path.substr(0, nEnd);
    path.remove_prefix(std::min(nEnd + 1, path.size()));
    if (part == "..") bOutside = true;
    if (part.empty() || part == "." || part == "..") continue;
    sLast = part;
    sInside += (sInside.empty() ? "" : "/") + sLast;
  }
  return bOutside ? sLast : sInside;
}

}  // namespace

std::string TextureName(std::string_view stored) {
  stored = stored.substr(0, stored.find('\0'));
  return InsideFolder(IsUtf8(stored) ? std::string(stored) : FromCodePage1252(stored));
}

}  // namespace quillorbit::d3dx8
