#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "fakes/call_log.h"
#include "platform/controls.h"

namespace quillorbit::fakes {

class FakeLabel;
class FakePictureBox;

/// The controls by their design names.
using Registry = std::map<std::string, platform::Control*, std::less<>>;

/// Keeps its geometry to the twip; labels of kind Text size themselves at `fTwipsPerCharacter`.
template <class Interface>
class FakeControl : public Interface {
 public:
  FakeControl(CallLog& l, Registry& r, const platform::ControlDesign& d)
      : sName(d.sName),
        iTabIndex(d.iTabIndex),
        log(l),
        fLeft(d.fLeft),
        fTop(d.fTop),
        fWidth(d.fWidth),
        fHeight(d.fHeight) {
    r[sName] = this;
  }

  float Left() const override { return fLeft; }
  void Left(float f) override {
    log.Call(sName, ".Left = ", f);
    fLeft = f;
  }
  float Width() const override { return fWidth; }
  void Width(float f) override {
    log.Call(sName, ".Width = ", f);
    if (f < 0) throw std::invalid_argument("Width");
    fWidth = f;
  }
  float Height() const override { return fHeight; }
  void Move(float left, float top, float width, float height) override {
    log.Call(sName, ".Move ", left, ", ", top, ", ", width, ", ", height);
    if (width < 0 || height < 0) throw std::invalid_argument("Move");
    fLeft = left;
    fTop = top;
    fWidth = width;
    fHeight = height;
  }
  void Visible(bool b) override {
    log.Call(sName, ".Visible = ", b);
    bVisible = b;
  }

  const std::string sName;
  const int iTabIndex;
  CallLog& log;
  float fLeft, fTop, fWidth, fHeight;
  bool bVisible = true;
};

class FakeLabel : public FakeControl<platform::Label> {
 public:
  static constexpr float fTwipsPerCharacter = 90;

  FakeLabel(CallLog& l, Registry& r, const platform::ControlDesign& d, platform::LabelKind kind,
            std::string_view caption)
      : FakeControl(l, r, d), eKind(kind), sCaption(caption) {
    sCaption.reserve(64);
  }
  std::string Caption() const override { return sCaption; }
  void Caption(std::string_view s) override {
    log.Call(sName, ".Caption = ", s);
    sCaption = s;
    if (eKind == platform::LabelKind::Text)
      fWidth = fTwipsPerCharacter * static_cast<float>(s.size());
  }
  void BackColor(platform::Colour c) override {
    log.Call(sName, ".BackColor = ", c);
    backColor = c;
  }

  const platform::LabelKind eKind;
  std::string sCaption;
  platform::Colour backColor = 0;
};

class FakeTextBox : public FakeControl<platform::TextBox> {
 public:
  FakeTextBox(CallLog& l, Registry& r, const platform::ControlDesign& d, std::string_view text)
      : FakeControl(l, r, d), sText(text) {}
  std::string Text() const override { return sText; }
  void Text(std::string_view s) override {
    log.Call(sName, ".Text = ", s);
    sText = s;
  }
  void SelStart(int i) override { log.Call(sName, ".SelStart = ", i); }
  void SelLength(int i) override { log.Call(sName, ".SelLength = ", i); }

  /// The user types a text and leaves the box; true when the box lets him go.
  bool Leave(std::string_view s) {
    sText = s;
    bool bCancel = false;
    Validate(bCancel);
    return !bCancel;
  }

  std::string sText;
};

class FakeSlider : public FakeControl<platform::Slider> {
 public:
  using FakeControl::FakeControl;
  void Min(int i) override {
    log.Call(sName, ".Min = ", i);
    iMin = i;
    Take(iValue);
  }
  void Max(int i) override {
    log.Call(sName, ".Max = ", i);
    iMax = i;
    Take(iValue);
  }
  int Value() const override { return iValue; }
  void Value(int i) override {
    log.Call(sName, ".Value = ", i);
    Take(i);
  }
  void Slide(int i) { Take(i); }  ///< the user does

  int iMin = 0, iMax = 10, iValue = 0;

 private:
  void Take(int i) {
    i = std::clamp(i, iMin, iMax);
    if (i == std::exchange(iValue, i)) return;
    if (Change) Change();
  }
};

class FakeCheckBox : public FakeControl<platform::CheckBox> {
 public:
  FakeCheckBox(CallLog& l, Registry& r, const platform::ControlDesign& d, std::string_view caption)
      : FakeControl(l, r, d), sCaption(caption) {}
  int Value() const override { return iValue; }
  void Value(int i) override {
    log.Call(sName, ".Value = ", i);
    iValue = i;
  }
  void Tick(int i) {  ///< the user does
    iValue = i;
    Click();
  }

  const std::string sCaption;
  int iValue = 0;
};

/// Makes controls for the container that it is a part of.
template <class Interface>
class FakeContainer : public Interface {
 public:
  template <class... Args>
  FakeContainer(CallLog& l, Registry& r, Args&&... args)
      : Interface(std::forward<Args>(args)...), containerLog(l), registry(r) {}

  std::unique_ptr<platform::Label> NewLabel(const platform::ControlDesign& d,
                                            platform::LabelKind kind,
                                            std::string_view caption) override {
    return std::make_unique<FakeLabel>(containerLog, registry, d, kind, caption);
  }
  std::unique_ptr<platform::TextBox> NewTextBox(const platform::ControlDesign& d,
                                                std::string_view text) override {
    return std::make_unique<FakeTextBox>(containerLog, registry, d, text);
  }
  std::unique_ptr<platform::Slider> NewSlider(const platform::ControlDesign& d) override {
    return std::make_unique<FakeSlider>(containerLog, registry, d);
  }
  std::unique_ptr<platform::CheckBox> NewCheckBox(const platform::ControlDesign& d,
                                                  std::string_view caption) override {
    return std::make_unique<FakeCheckBox>(containerLog, registry, d, caption);
  }
  std::unique_ptr<platform::PictureBox> NewPictureBox(const platform::ControlDesign& d,
                                                      platform::Docking eDocking) override;

  CallLog& containerLog;
  Registry& registry;
};

class FakePictureBox : public FakeContainer<FakeControl<platform::PictureBox>> {
 public:
  FakePictureBox(CallLog& l, Registry& r, const platform::ControlDesign& d, platform::Docking dock)
      : FakeContainer(l, r, l, r, d), eDocking(dock) {}
  platform::WindowHandle hWnd() const override { return 2001; }
  float ScaleWidth() const override { return fWidth; }

  const platform::Docking eDocking;
};

template <class Interface>
std::unique_ptr<platform::PictureBox> FakeContainer<Interface>::NewPictureBox(
    const platform::ControlDesign& d, platform::Docking eDocking) {
  return std::make_unique<FakePictureBox>(containerLog, registry, d, eDocking);
}

}  // namespace quillorbit::fakes
