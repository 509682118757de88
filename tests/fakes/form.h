#pragma once

#include "fakes/controls.h"
#include "fakes/menu.h"
#include "fakes/timer.h"
#include "platform/form.h"

namespace quillorbit::fakes {

struct FakeForm : FakeContainer<FakeObject<Form>> {
  FakeForm(CallLog& l, Registry& r, const FormDesign& d, WindowHandle hwnd, IconHandle hicon)
      : FakeContainer(r, l, d.sName),
        sCaption(d.sCaption),
        sClass(d.sClass),
        fScaleWidth(d.fScaleWidth),
        fScaleHeight(d.fScaleHeight),
        hWindow(hwnd),
        hIcon(hicon) {}

  WindowHandle hWnd() const override { return hWindow; }
  IconHandle Icon() const override { return hIcon; }
  std::string Caption() const override { return sCaption; }
  void Caption(View s) override { Set("Caption", sCaption, s); }
  bool Visible() const override { return bVisible; }
  void Show() override {
    Call("Show");
    bVisible = true;
  }
  void Hide() override {
    Call("Hide");
    bVisible = false;
  }
  platform::WindowState WindowState() const override { return eState; }
  void WindowState(platform::WindowState e) override {
    Call("WindowState", static_cast<int>(e));
    eState = e;
  }
  void Width(float f) override { Call("Width", f); }
  void Height(float f) override { Call("Height", f); }
  float ScaleWidth() const override { return fScaleWidth; }
  float ScaleHeight() const override { return fScaleHeight; }

  Own<Timer> NewTimer(int iInterval, bool bEnabled) override {
    const std::string sTimer = "timer" + std::to_string(timers.size());
    auto timer = std::make_unique<FakeTimer>(log, sTimer, iInterval, bEnabled);
    timers.push_back(timer.get());
    return timer;
  }
  Own<Menu> NewMenu(View) override { return std::make_unique<FakeMenu>(log, menuItems); }
  void PopupMenu(Menu&, u32 lFlags, MenuItem* pDefault) override {
    const auto* pItem = dynamic_cast<FakeMenuItem*>(pDefault);
    Call("PopupMenu", lFlags, pItem == nullptr ? "no default" : pItem->sName);
    if (whileMenuIsOpen) whileMenuIsOpen();
  }

  void Unload() override {
    if (bUnloaded) return;
    Call("Unload");
    Close(UnloadReason::FormCode);
  }

  /// The user, the session or the program closes the window.
  void Close(UnloadReason eReason) {
    if (bUnloaded) return;
    bool bCancel = false;
    if (QueryUnload) QueryUnload(bCancel, eReason);
    if (bCancel || bUnloaded) return;
    bUnloaded = true;
    bVisible = false;
    if (Unloaded) Unloaded();
  }

  std::string sCaption;
  const std::string sClass;
  float fScaleWidth, fScaleHeight;
  const WindowHandle hWindow;
  const IconHandle hIcon;
  bool bVisible = false, bUnloaded = false;
  platform::WindowState eState = platform::WindowState::Normal;
  std::vector<FakeTimer*> timers;
  std::vector<FakeMenuItem*> menuItems;
  std::function<void()> whileMenuIsOpen;
};

}  // namespace quillorbit::fakes
