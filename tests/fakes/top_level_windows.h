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
    log.Call("EnumWindows", lParam);
    return std::ranges::all_of(windows, [&](const auto& w) { return enumProc(w.hwnd, lParam); });
  }
  bool IsWindowVisible(WindowHandle hwnd) override { return Find(hwnd).bVisible; }
  int GetWindowTextLengthA(WindowHandle hwnd) override {
    return static_cast<int>(Find(hwnd).sTitle.size()) + nLengthExcess;
  }
  int GetWindowTextA(WindowHandle hwnd, char* sBuffer, int nMaxCount) override {
    return Copy(Find(hwnd).sTitle, sBuffer, nMaxCount);
  }
  int GetClassNameA(WindowHandle hwnd, char* sBuffer, int nMaxCount) override {
    return Copy(Find(hwnd).sClass, sBuffer, nMaxCount);
  }
  bool ShowWindow(WindowHandle hwnd, int nCmdShow) override {
    log.Call("ShowWindow", hwnd, nCmdShow);
    return true;
  }
  bool SetForegroundWindow(WindowHandle hwnd) override {
    log.Call("SetForegroundWindow", hwnd);
    return true;
  }
  WindowHandle GetWindow(WindowHandle hwnd, u32 lCommand) override {
    log.Call("GetWindow", hwnd, lCommand);
    return owners[hwnd];
  }
  u32 SendMessageA(WindowHandle hwnd, u32 lMessage, u32 wParam, u32 lParam) override {
    log.Call("SendMessageA", hwnd, lMessage, wParam, lParam);
    return 0;
  }

  std::vector<FakeWindow> windows;
  std::map<WindowHandle, WindowHandle> owners;
  int nLengthExcess = 0;  ///< how much longer a title is reported than it is

 private:
  FakeWindow Find(WindowHandle hwnd) const {
    const auto it = std::ranges::find(windows, hwnd, &FakeWindow::hwnd);
    return it == windows.end() ? FakeWindow{0, "", "", false} : *it;
  }
  static int Copy(const std::string& s, char* sBuffer, int nMaxCount) {
    const std::size_t n = s.copy(sBuffer, static_cast<std::size_t>(nMaxCount) - 1);
    sBuffer[n] = '\0';
    return static_cast<int>(n);
  }
};

}  // namespace quillorbit::fakes
