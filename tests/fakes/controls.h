#pragma once

#include <tuple>

#include "fakes/call_log.h"
#include "platform/controls.h"

namespace quillorbit::fakes {

/// The controls of all forms.
struct Registry {
  std::map<std::string, Control*> byName;
  std::map<int, std::string> byTabIndex;
};

/// Keeps its geometry to the twip.
template <class Interface>
struct FakeControl : Fake<Interface> {
  FakeControl(CallLog& l, Registry& r, const ControlDesign& d) : Fake<Interface>(l, d.sName) {
    std::tie(fLeft, fTop, fWidth, fHeight) = std::tie(d.fLeft, d.fTop, d.fWidth, d.fHeight);
    r.byName[this->sName] = this;
    r.byTabIndex[d.iTabIndex] = this->sName;
  }
  float Left() const override { return fLeft; }
  void Left(float f) override { this->Set(__func__, fLeft, f); }
  float Width() const override { return fWidth; }
  void Width(float f) override {
    if (f < 0) throw std::invalid_argument("Width");
    this->Set(__func__, fWidth, f);
  }
  float Height() const override { return fHeight; }
  void Move(float l, float t, float w, float h) override {
    if (w < 0 || h < 0) throw std::invalid_argument("Move");
    this->Call(__func__, l, t, w, h);
    std::tie(fLeft, fTop, fWidth, fHeight) = std::tie(l, t, w, h);
  }
  void Visible(bool b) override { this->Call(__func__, b); }

  float fLeft, fTop, fWidth, fHeight;
};

/// Does not size itself to its caption.
struct FakeLabel : FakeControl<Label> {
  FakeLabel(CallLog& l, Registry& r, const ControlDesign& d, View s)
      : FakeControl(l, r, d), sCaption(s) {
    sCaption.reserve(64);  // so that setting it takes no memory
  }
  std::string Caption() const override { return sCaption; }
  void Caption(View s) override { Set(__func__, sCaption, s); }
  void BackColor(Colour c) override { Call(__func__, c); }

  std::string sCaption;
};

struct FakeTextBox : FakeControl<TextBox> {
  using FakeControl::FakeControl;
  std::string Text() const override { return sText; }
  void Text(View s) override { Set(__func__, sText, s); }
  void SelStart(int i) override { Call(__func__, i); }
  void SelLength(int i) override { Call(__func__, i); }

  /// The user types a text and leaves the box; true when the box lets the focus go.
  bool Leave(View s) {
    sText = s;
    bool bCancel = false;
    Validate(bCancel);
    return !bCancel;
  }
  std::string sText;
};

struct FakeSlider : FakeControl<Slider> {
  using FakeControl::FakeControl;
  void Min(int i) override { Set(__func__, iMin, i); }
  void Max(int i) override { Set(__func__, iMax, i); }
  int Value() const override { return iValue; }
  void Value(int i) override { Slide(Answer(i, __func__, i)); }
  /// The user moves the slider.
  void Slide(int i) {
    iValue = std::clamp(i, iMin, iMax);
    Change();
  }
  int iMin = 0, iMax = 10, iValue = 0;
};

struct FakeCheckBox : FakeControl<CheckBox> {
  using FakeControl::FakeControl;
  int Value() const override { return 0; }
  void Value(int i) override { Call(__func__, i); }
};

/// Adds to `Base` the making of controls.
template <class Base>
struct FakeContainer : Base {
  template <class... Args>
  explicit FakeContainer(Registry& r, Args&&... args) : Base(args...), registry(r) {}

  template <class Made, class... Args>
  Own<Made> New(const ControlDesign& d, const Args&... args) {
    return std::make_unique<Made>(this->log, registry, d, args...);
  }
  Own<Label> NewLabel(const ControlDesign& d, LabelKind, View s) override {
    return New<FakeLabel>(d, s);
  }
  Own<TextBox> NewTextBox(const ControlDesign& d, View) override { return New<FakeTextBox>(d); }
  Own<Slider> NewSlider(const ControlDesign& d) override { return New<FakeSlider>(d); }
  Own<CheckBox> NewCheckBox(const ControlDesign& d, View) override { return New<FakeCheckBox>(d); }
  Own<PictureBox> NewPictureBox(const ControlDesign& d, Docking) override;

  Registry& registry;
};

struct FakePictureBox : FakeContainer<FakeControl<PictureBox>> {
  FakePictureBox(CallLog& l, Registry& r, const ControlDesign& d) : FakeContainer(r, l, r, d) {}
  WindowHandle hWnd() const override { return 2001; }
  float ScaleWidth() const override { return fWidth; }
};

template <class Base>
Own<PictureBox> FakeContainer<Base>::NewPictureBox(const ControlDesign& d, Docking) {
  return New<FakePictureBox>(d);
}

}  // namespace quillorbit::fakes
