#include "tray/TextFields.h"

#include <algorithm>
#include <string>

namespace quillorbit {
namespace {

void ConvertField(std::span<char> field, std::span<const char16_t> wide,
                  const platform::CodePage& codePage) {
  const std::string sText = codePage.WideCharToMultiByte({wide.data(), wide.size()});
  std::copy_n(sText.begin(), std::min(sText.size(), field.size()), field.begin());
}

}  // namespace

void CopyToTextField(std::span<char16_t> field, std::u16string_view sText, std::size_t nBytes) {
  if (sText.empty()) return;
  const std::size_t nUnits = nBytes / sizeof(char16_t);
  const auto pEnd = std::copy_n(sText.begin(), std::min(sText.size(), nUnits - 1), field.begin());
  std::fill(pEnd, field.begin() + static_cast<std::ptrdiff_t>(nUnits), u'\0');
}

void CopyToFixedField(std::span<char16_t> field, std::u16string_view sText) {
  const auto pEnd = std::copy_n(sText.begin(), std::min(sText.size(), field.size()), field.begin());
  std::fill(pEnd, field.end(), u' ');
}

std::u16string_view FieldText(std::span<const char16_t> field) {
  const std::u16string_view sWhole(field.data(), field.size());
  return sWhole.substr(0, sWhole.find(u'\0'));
}

platform::NOTIFYICONDATAA ToAnsi(const platform::NOTIFYICONDATAW& wide,
                                 const platform::CodePage& codePage) {
  platform::NOTIFYICONDATAA ansi{};
  ansi.cbSize = wide.cbSize;
  ansi.hWnd = wide.hWnd;
  ansi.uID = wide.uID;
  ansi.uFlags = wide.uFlags;
  ansi.uCallbackMessage = wide.uCallbackMessage;
  ansi.hIcon = wide.hIcon;
  ConvertField(ansi.szTip, wide.szTip, codePage);
  ansi.dwState = wide.dwState;
  ansi.dwStateMask = wide.dwStateMask;
  ConvertField(ansi.szInfo, wide.szInfo, codePage);
  ansi.uTimeout = wide.uTimeout;
  ConvertField(ansi.szInfoTitle, wide.szInfoTitle, codePage);
  ansi.dwInfoFlags = wide.dwInfoFlags;
  return ansi;
}

}  // namespace quillorbit
