#pragma once

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "base/Utf16.h"
#include "fakes/call_log.h"
#include "platform/shell.h"

namespace quillorbit::fakes {

/// Notes each command with what its flags say is valid, and keeps the records themselves.
class FakeShell : public platform::Shell {
 public:
  explicit FakeShell(CallLog& log) : m_log(log) {}

  bool Shell_NotifyIconA(std::uint32_t lMessage, const platform::NOTIFYICONDATAA& data) override {
    lastA = data;
    Note("Shell_NotifyIconA ", lMessage, data);
    return !bRefuses;
  }
  bool Shell_NotifyIconW(std::uint32_t lMessage, const platform::NOTIFYICONDATAW& data) override {
    lastW = data;
    Note("Shell_NotifyIconW ", lMessage, data);
    return !bRefuses;
  }

  platform::NOTIFYICONDATAA lastA{};
  platform::NOTIFYICONDATAW lastW{};
  bool bRefuses = false;

 private:
  template <class Char, std::size_t n>
  static std::string Text(const Char (&field)[n]) {
    const std::basic_string<Char> sText(field, std::find(field, field + n, Char(0)));
    if constexpr (std::is_same_v<Char, char>)
      return sText;
    else
      return ToUtf8(sText);
  }

  template <class Record>
  void Note(const char* sCall, std::uint32_t lMessage, const Record& r) {
    std::string sValid;
    if (lMessage <= platform::NIM_MODIFY) {
      if (r.uFlags & platform::NIF_MESSAGE)
        sValid += ", message " + std::to_string(r.uCallbackMessage);
      if (r.uFlags & platform::NIF_ICON) sValid += ", icon " + std::to_string(r.hIcon);
      if (r.uFlags & platform::NIF_TIP) sValid += ", tip " + Text(r.szTip);
      if (r.uFlags & platform::NIF_INFO)
        sValid += ", balloon " + Text(r.szInfoTitle) + ": " + Text(r.szInfo) + ", " +
                  std::to_string(r.dwInfoFlags) + ", " + std::to_string(r.uTimeout);
    }
    m_log.Call(sCall, lMessage, ", ", r.cbSize, ", ", r.hWnd, ", ", r.uID, sValid);
  }

  CallLog& m_log;
};

}  // namespace quillorbit::fakes
