#pragma once

#include <string>
#include <vector>

#include "fakes/controls.h"
#include "fakes/timer.h"
#include "platform/form.h"

namespace quillorbit::fakes {

class FakeForm : public FakeContainer<platform::Form> {
 public:
  FakeForm(CallLog& l, Registry& r, const platform::FormDesign& d)
      : FakeContainer(l, r),
        sName(d.sName),
        sCaption(d.sCaption),
        fScaleWidth(d.fScaleWidth),
        fScaleHeight(d.fScaleHeight) {}

  platform::WindowHandle hWnd() const override { return 0x500001; }
  std::string Caption() const override { return sCaption; }
  void Caption(std::string_view s) override {
    containerLog.Call(sName, ".Caption = ", s);
    sCaption = s;
  }
  bool Visible() const override { return bVisible; }
  void Show() override {
    containerLog.Call(sName, ".Show");
    bVisible = true;
  }
  void Hide() override {
    containerLog.Call(sName, ".Hide");
    bVisible = false;
  }
  platform::WindowState WindowState() const override { return eState; }
  void WindowState(platform::WindowState e) override {
    containerLog.Call(sName, ".WindowState = ", static_cast<int>(e));
    eState = e;
  }
  void Width(float f) override { containerLog.Call(sName, ".Width = ", f); }
  void Height(float f) override { containerLog.Call(sName, ".Height = ", f); }
  float ScaleWidth() const override { return fScaleWidth; }
  float ScaleHeight() const override { return fScaleHeight; }

  std::unique_ptr<platform::Timer> NewTimer(int iInterval, bool bEnabled) override {
    auto timer = std::make_unique<FakeTimer>(containerLog, "timer" + std::to_string(timers.size()),
                                             iInterval, bEnabled);
    timers.push_back(timer.get());
    return timer;
  }

  void Unload() override {
    containerLog.Call(sName, ".Unload");
    Close(platform::UnloadReason::FormCode);
  }

  /// The user, the session or the program closes the window.
  void Close(platform::UnloadReason eReason) {
    if (bUnloaded) return;
    bool bCancel = false;
    QueryUnload(bCancel, eReason);
    if (bCancel || bUnloaded) return;
    bUnloaded = true;
    bVisible = false;
    Unloaded();
  }

  const std::string sName;
  std::string sCaption;
  float fScaleWidth, fScaleHeight;
  bool bVisible = false;
  bool bUnloaded = false;
  platform::WindowState eState = platform::WindowState::Normal;
  std::vector<FakeTimer*> timers;
};

}  // namespace quillorbit::fakes
