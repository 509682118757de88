#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fakes/controls.h"
#include "fakes/menu.h"
#include "fakes/timer.h"
#include "platform/form.h"

namespace quillorbit::fakes {

class FakeForm : public FakeContainer<platform::Form> {
 public:
  FakeForm(CallLog& l, Registry& r, const platform::FormDesign& d, platform::WindowHandle hWnd,
           platform::IconHandle hIcon)
      : FakeContainer(l, r),
        sName(d.sName),
        sCaption(d.sCaption),
        fScaleWidth(d.fScaleWidth),
        fScaleHeight(d.fScaleHeight),
        sClass(d.sClass),
        m_hWnd(hWnd),
        m_hIcon(hIcon) {}

  platform::WindowHandle hWnd() const override { return m_hWnd; }
  platform::IconHandle Icon() const override { return m_hIcon; }
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

  std::unique_ptr<platform::Menu> NewMenu(std::string_view) override {
    return std::make_unique<FakeMenu>(containerLog, menuItems);
  }
  void PopupMenu(platform::Menu&, std::uint32_t lFlags, platform::MenuItem* pDefault) override {
    const auto* pItem = dynamic_cast<FakeMenuItem*>(pDefault);
    containerLog.Call(sName, ".PopupMenu ", lFlags, ", ",
                      pItem == nullptr ? "no default" : pItem->sName);
    if (whileMenuIsOpen) whileMenuIsOpen();
  }

  void Unload() override {
    if (bUnloaded) return;
    containerLog.Call(sName, ".Unload");
    Close(platform::UnloadReason::FormCode);
  }

  /// The user, the session or the program closes the window.
  void Close(platform::UnloadReason eReason) {
    if (bUnloaded) return;
    bool bCancel = false;
    if (QueryUnload) QueryUnload(bCancel, eReason);
    if (bCancel || bUnloaded) return;
    bUnloaded = true;
    bVisible = false;
    if (Unloaded) Unloaded();
  }

  const std::string sName;
  std::string sCaption;
  float fScaleWidth, fScaleHeight;
  bool bVisible = false;
  bool bUnloaded = false;
  platform::WindowState eState = platform::WindowState::Normal;
  const std::string sClass;
  std::vector<FakeTimer*> timers;
  std::vector<FakeMenuItem*> menuItems;
  std::function<void()> whileMenuIsOpen;

 private:
  const platform::WindowHandle m_hWnd;
  const platform::IconHandle m_hIcon;
};

}  // namespace quillorbit::fakes
