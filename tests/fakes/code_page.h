#pragma once

#include "platform/code_page.h"

namespace quillorbit::fakes {

/// Latin-1.
struct FakeCodePage : platform::CodePage {
  std::string WideCharToMultiByte(std::u16string_view sText) const override {
    std::string sBytes;
    for (const char16_t c : sText) sBytes += c < 256 ? static_cast<char>(c) : '?';
    return sBytes;
  }
  std::u16string MultiByteToWideChar(std::string_view sText) const override {
    std::u16string sWide;
    for (const char c : sText) sWide += static_cast<unsigned char>(c);
    return sWide;
  }
};

}  // namespace quillorbit::fakes
