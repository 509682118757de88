#pragma once

#include "fakes/call_log.h"
#include "platform/top_level_windows.h"

namespace quillorbit::fakes {

struct FakeWindow {
  WindowHandle hwnd;
  std::string sTitle, sClass;
  bool bVisible = true;
};

struct FakeTopLevelWindows : Fake<TopLevelWindows> {
  using Fake::Fake;
  bool EnumWindows(const WNDENUMPROC& enumProc, i32 lParam) override {
    Call(__func__, lParam);
    return std::ranges::all_of(windows, [&](const auto& w) { return enumProc(w.hwnd, lParam); });
  }
  bool IsWindowVisible(WindowHandle h) override { return Find(h).bVisible; }
  int GetWindowTextLengthA(WindowHandle h) override {
    return static_cast<int>(Find(h).sTitle.size());
  }
  int GetWindowTextA(WindowHandle h, char* sBuffer, int nMaxCount) override {
    return Copy(Find(h).sTitle, sBuffer, nMaxCount);
  }
  int GetClassNameA(WindowHandle h, char* sBuffer, int nMaxCount) override {
    return Copy(Find(h).sClass, sBuffer, nMaxCount);
  }
  bool ShowWindow(WindowHandle h, int n) override { return Answer(true, __func__, h, n); }
  bool SetForegroundWindow(WindowHandle h) override { return Answer(true, __func__, h); }
  WindowHandle GetWindow(WindowHandle h, u32 lCommand) override {
    return Answer(owners[h], __func__, h, lCommand);
  }
  u32 SendMessageA(WindowHandle h, u32 lMessage, u32 wParam, u32 lParam) override {
    return Answer(0U, __func__, h, lMessage, wParam, lParam);
  }

  std::vector<FakeWindow> windows;
  std::map<WindowHandle, WindowHandle> owners;

 private:
  FakeWindow Find(WindowHandle hwnd) const {
    const auto it = std::ranges::find(windows, hwnd, &FakeWindow::hwnd);
    return windows.at(std::size_t(it - windows.begin()));
  }
  static int Copy(const std::string& s, char* sBuffer, int nMaxCount) {
    const std::size_t n = s.copy(sBuffer, static_cast<std::size_t>(nMaxCount) - 1);
    sBuffer[n] = '\0';
    return static_cast<int>(n);
  }
};

}  // namespace quillorbit::fakes
