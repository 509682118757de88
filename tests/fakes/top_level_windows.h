#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "fakes/call_log.h"
#include "platform/top_level_windows.h"

namespace quillorbit::fakes {

struct FakeWindow {
  platform::WindowHandle hwnd;
  std::string sTitle, sClass;
  bool bVisible = true;
};

class FakeTopLevelWindows : public platform::TopLevelWindows {
 public:
  explicit FakeTopLevelWindows(CallLog& log) : m_log(log) {}

  bool EnumWindows(const WNDENUMPROC& enumProc, std::int32_t lParam) override {
    m_log.Call("EnumWindows ", lParam);
    return std::all_of(windows.begin(), windows.end(),
                       [&](const FakeWindow& w) { return enumProc(w.hwnd, lParam); });
  }
  bool IsWindowVisible(platform::WindowHandle hwnd) override { return Find(hwnd).bVisible; }
  int GetWindowTextLengthA(platform::WindowHandle hwnd) override {
    return static_cast<int>(Find(hwnd).sTitle.size()) + nTextLengthTooLong;
  }
  int GetWindowTextA(platform::WindowHandle hwnd, char* sBuffer, int nMaxCount) override {
    return Copy(Find(hwnd).sTitle, sBuffer, nMaxCount);
  }
  int GetClassNameA(platform::WindowHandle hwnd, char* sBuffer, int nMaxCount) override {
    return Copy(Find(hwnd).sClass, sBuffer, nMaxCount);
  }
  bool ShowWindow(platform::WindowHandle hwnd, int nCmdShow) override {
    m_log.Call("ShowWindow ", hwnd, ", ", nCmdShow);
    return true;
  }
  bool SetForegroundWindow(platform::WindowHandle hwnd) override {
    m_log.Call("SetForegroundWindow ", hwnd);
    return true;
  }
  platform::WindowHandle GetWindow(platform::WindowHandle hwnd, std::uint32_t lCommand) override {
    m_log.Call("GetWindow ", hwnd, ", ", lCommand);
    return owners[hwnd];
  }
  std::uint32_t SendMessageA(platform::WindowHandle hwnd, std::uint32_t lMessage,
                             std::uint32_t wParam, std::uint32_t lParam) override {
    m_log.Call("SendMessageA ", hwnd, ", ", lMessage, ", ", wParam, ", ", lParam);
    return 0;
  }

  std::vector<FakeWindow> windows;
  std::map<platform::WindowHandle, platform::WindowHandle> owners;
  int nTextLengthTooLong = 0;  ///< by so much the length is overestimated

 private:
  const FakeWindow& Find(platform::WindowHandle hwnd) const {
    static const FakeWindow gone{0, "", "", false};
    const auto it = std::find_if(windows.begin(), windows.end(),
                                 [&](const FakeWindow& w) { return w.hwnd == hwnd; });
    return it == windows.end() ? gone : *it;
  }
  static int Copy(const std::string& s, char* sBuffer, int nMaxCount) {
    const std::size_t n = std::min(s.size(), static_cast<std::size_t>(nMaxCount) - 1);
    std::memcpy(sBuffer, s.data(), n);
    sBuffer[n] = '\0';
    return static_cast<int>(n);
  }

  CallLog& m_log;
};

}  // namespace quillorbit::fakes
