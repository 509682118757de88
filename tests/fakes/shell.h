#pragma once

#include "base/Utf16.h"
#include "fakes/call_log.h"
#include "platform/shell.h"

namespace quillorbit::fakes {

/// Records each command with the fields that its flags declare valid, and keeps the last records.
struct FakeShell : Fake<Shell> {
  using Fake::Fake;
  bool Shell_NotifyIconA(u32 lMessage, const NOTIFYICONDATAA& data) override {
    return Notify(__func__, lMessage, data);
  }
  bool Shell_NotifyIconW(u32 lMessage, const NOTIFYICONDATAW& data) override {
    return Notify(__func__, lMessage, lastW = data);
  }

  NOTIFYICONDATAW lastW{};

 private:
  static std::string Text(View s) { return std::string(s.substr(0, s.find('\0'))); }
  static std::string Text(std::u16string_view s) { return ToUtf8(s.substr(0, s.find(u'\0'))); }

  template <class Char>
  bool Notify(View sCall, u32 lMessage, const NotifyIconData<Char>& r) {
    const auto text = [](const auto& field) { return Text({field, std::size(field)}); };
    const u32 lValid = lMessage <= NIM_MODIFY ? r.uFlags : 0;
    std::ostringstream fields;
    fields << r.uID;
    if (lValid & NIF_MESSAGE) fields << ", message " << r.uCallbackMessage;
    if (lValid & NIF_ICON) fields << ", icon " << r.hIcon;
    if (lValid & NIF_TIP) fields << ", tip " << text(r.szTip);
    if (lValid & NIF_INFO)
      fields << ", balloon " << text(r.szInfoTitle) << ": " << text(r.szInfo) << ", "
             << r.dwInfoFlags << ", " << r.uTimeout;
    Call(sCall, lMessage, r.cbSize, r.hWnd, fields.str());
    return false;  // nobody looks at it
  }
};

}  // namespace quillorbit::fakes
