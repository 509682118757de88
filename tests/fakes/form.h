#pragma once

#include "fakes/controls.h"
#include "fakes/menu.h"
#include "fakes/resources.h"
#include "fakes/timer.h"
#include "platform/form.h"

namespace quillorbit::fakes {

struct FakeForm : FakeContainer<Fake<Form>> {
  FakeForm(CallLog& l, Registry& r, const FormDesign& d)
      : FakeContainer(r, l, d.sName), design(d) {}

  WindowHandle hWnd() const override { return sName == "frmMain" ? 1001 : 1002; }
  IconHandle Icon() const override { return FakeResources::Icon(design.sIcon, 16); }
  std::string Caption() const override { return sCaption; }
  void Caption(View s) override { Set(__func__, sCaption, s); }
  bool Visible() const override { return bVisible; }
  void Show() override { bVisible = Answer(true, __func__); }
  void Hide() override { bVisible = Answer(false, __func__); }
  platform::WindowState WindowState() const override { return eState; }
  void WindowState(platform::WindowState e) override {
    eState = Answer(e, __func__, static_cast<int>(e));
  }
  void Width(float f) override { Call(__func__, f); }
  void Height(float f) override { Call(__func__, f); }
  float ScaleWidth() const override { return fScaleWidth; }
  float ScaleHeight() const override { return fScaleHeight; }

  Own<Timer> NewTimer(int iInterval, bool bEnabled) override {
    auto timer = std::make_unique<FakeTimer>(log, "timer" + std::to_string(timers.size()),
                                             iInterval, bEnabled);
    timers.push_back(timer.get());
    return timer;
  }
  Own<Menu> NewMenu(View) override { return std::make_unique<FakeMenu>(log, menuItems); }
  void PopupMenu(Menu&, u32 lFlags, MenuItem* pDefault) override {
    const auto* pItem = dynamic_cast<FakeMenuItem*>(pDefault);
    Call(__func__, lFlags, pItem ? pItem->sName : "no default");
    if (whileMenuIsOpen) whileMenuIsOpen();
  }

  void Unload() override {
    if (bUnloaded) return;
    Call(__func__);
    Close(UnloadReason::FormCode);
  }
  /// The user, the session or the program closes the window.
  void Close(UnloadReason eReason) {
    bool bCancel = bUnloaded;
    if (QueryUnload && !bUnloaded) QueryUnload(bCancel, eReason);
    if (bCancel || bUnloaded) return;
    bUnloaded = true;
    bVisible = false;
    if (Unloaded) Unloaded();
  }

  const FormDesign design;
  std::string sCaption{design.sCaption};
  float fScaleWidth = design.fScaleWidth, fScaleHeight = design.fScaleHeight;
  bool bVisible = false, bUnloaded = false;
  platform::WindowState eState = platform::WindowState::Normal;
  std::vector<FakeTimer*> timers;
  std::vector<FakeMenuItem*> menuItems;
  std::function<void()> whileMenuIsOpen;
};

}  // namespace quillorbit::fakes
