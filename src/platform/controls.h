#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/event.h"

namespace quillorbit::platform {

/// A window's handle; 0 is none.
using WindowHandle = std::uint32_t;

/// A colour as the platform stores it: red in the low byte, then green, then blue.
using Colour = std::uint32_t;

struct Font {
  std::string_view sName;  ///< face name; a platform without it takes its nearest
  float fPoints;           ///< size in points (1/72 inch)
};

/// A control as designed: its place in its container and in the tab order.
/// All lengths are twips (1/1440 inch).
struct ControlDesign {
  std::string_view sName;  ///< unique in the form; not shown
  float fLeft, fTop, fWidth, fHeight;
  int iTabIndex;
  Font font;
};

/// What every control has. Lengths are twips as 32-bit floats; a platform that places controls on
/// whole pixels returns the lengths that it really used.
class Control {
 public:
  virtual ~Control() = default;

  [[nodiscard]] virtual float Left() const = 0;
  virtual void Left(float fLeft) = 0;
  [[nodiscard]] virtual float Width() const = 0;
  /// Throws std::invalid_argument for a negative width and keeps the present one.
  virtual void Width(float fWidth) = 0;
  [[nodiscard]] virtual float Height() const = 0;
  /// Throws std::invalid_argument for a negative width or height and moves nothing.
  virtual void Move(float fLeft, float fTop, float fWidth, float fHeight) = 0;

  virtual void Visible(bool bVisible) = 0;
};

enum class LabelKind {
  Text,  ///< plain text; the label sizes itself to its caption
  Lamp,  ///< a framed box of fixed size with its caption centred on a background colour
};

/// A label is drawn on its container, below the picture boxes.
class Label : public Control {
 public:
  [[nodiscard]] virtual std::string Caption() const = 0;
  virtual void Caption(std::string_view sCaption) = 0;
  virtual void BackColor(Colour colour) = 0;
};

/// A single-line text box.
class TextBox : public Control {
 public:
  [[nodiscard]] virtual std::string Text() const = 0;
  virtual void Text(std::string_view sText) = 0;
  /// Selection in characters of the text.
  virtual void SelStart(int iStart) = 0;
  virtual void SelLength(int iLength) = 0;

  Event<std::int16_t> KeyPress;  ///< character code of the key pressed, before the box handles it
  Event<bool&> Validate;         ///< the focus is about to leave; true keeps it in the box
};

/// A horizontal slider.
class Slider : public Control {
 public:
  virtual void Min(int iMin) = 0;
  virtual void Max(int iMax) = 0;
  [[nodiscard]] virtual int Value() const = 0;
  /// A value outside Min..Max becomes the nearer bound.
  virtual void Value(int iValue) = 0;

  Event<> Change;  ///< the value has changed, by the user or by the program
};

class CheckBox : public Control {
 public:
  [[nodiscard]] virtual int Value() const = 0;  ///< 1 checked, 0 unchecked
  virtual void Value(int iValue) = 0;

  Event<> Click;  ///< the user has ticked or cleared the box
};

class PictureBox;

enum class Docking { Top, Bottom };

/// What holds controls. A control exists until the object returned here is destroyed, which must
/// happen before the container is destroyed.
class Container {
 public:
  virtual ~Container() = default;

  [[nodiscard]] virtual std::unique_ptr<Label> NewLabel(const ControlDesign& design,
                                                        LabelKind eKind,
                                                        std::string_view sCaption) = 0;
  [[nodiscard]] virtual std::unique_ptr<TextBox> NewTextBox(const ControlDesign& design,
                                                            std::string_view sText) = 0;
  [[nodiscard]] virtual std::unique_ptr<Slider> NewSlider(const ControlDesign& design) = 0;
  [[nodiscard]] virtual std::unique_ptr<CheckBox> NewCheckBox(const ControlDesign& design,
                                                              std::string_view sCaption) = 0;
  [[nodiscard]] virtual std::unique_ptr<PictureBox> NewPictureBox(const ControlDesign& design,
                                                                  Docking eDocking) = 0;
};

/// A child window, docked to an edge of its form: as wide as the form's client area, at the top or
/// the bottom of it. It can be drawn into or carry controls; without controls it can have the
/// focus.
class PictureBox : public Control, public Container {
 public:
  [[nodiscard]] virtual WindowHandle hWnd() const = 0;
  [[nodiscard]] virtual float ScaleWidth() const = 0;  ///< inner width

  Event<> Resize;
};

}  // namespace quillorbit::platform
