#pragma once

#include <vector>

#include <QCheckBox>
#include <QSlider>
#include <QWidget>

#include "platform/linux/window/drawing_surface.h"
#include "platform/linux/window/label.h"
#include "platform/linux/window/text_box.h"
#include "platform/linux/window/widget_control.h"

namespace quillorbit::linux_adapter {

class LinuxSlider final : public WidgetControl<platform::Slider, QSlider> {
 public:
  LinuxSlider(QWidget* pParent, const platform::ControlDesign& design);

  void Min(int iMin) override { m_widget->setMinimum(iMin); }
  void Max(int iMax) override { m_widget->setMaximum(iMax); }
  [[nodiscard]] int Value() const override { return m_widget->value(); }
  void Value(int iValue) override { m_widget->setValue(iValue); }
};

class LinuxCheckBox final : public WidgetControl<platform::CheckBox, QCheckBox> {
 public:
  LinuxCheckBox(QWidget* pParent, const platform::ControlDesign& design, std::string_view sCaption);

  [[nodiscard]] int Value() const override { return m_widget->isChecked() ? 1 : 0; }
  void Value(int iValue) override { m_widget->setChecked(iValue != 0); }
};

/// Creates controls on a parent widget.
template <class Interface>
class WidgetContainer : public Interface {
 public:
  using Interface::Interface;

  [[nodiscard]] std::unique_ptr<platform::Label> NewLabel(const platform::ControlDesign& design,
                                                          platform::LabelKind eKind,
                                                          std::string_view sCaption) override {
    return std::make_unique<LinuxLabel>(ContainerWidget(), design, eKind, sCaption);
  }
  [[nodiscard]] std::unique_ptr<platform::TextBox> NewTextBox(const platform::ControlDesign& design,
                                                              std::string_view sText) override {
    return std::make_unique<LinuxTextBox>(ContainerWidget(), design, sText);
  }
  [[nodiscard]] std::unique_ptr<platform::Slider> NewSlider(
      const platform::ControlDesign& design) override {
    return std::make_unique<LinuxSlider>(ContainerWidget(), design);
  }
  [[nodiscard]] std::unique_ptr<platform::CheckBox> NewCheckBox(
      const platform::ControlDesign& design, std::string_view sCaption) override {
    return std::make_unique<LinuxCheckBox>(ContainerWidget(), design, sCaption);
  }
  [[nodiscard]] std::unique_ptr<platform::PictureBox> NewPictureBox(
      const platform::ControlDesign& design, platform::Docking eDocking) override;

 protected:
  [[nodiscard]] virtual QWidget* ContainerWidget() = 0;
};

class LinuxPictureBox final
    : public WidgetContainer<WidgetControl<platform::PictureBox, DrawingSurface>> {
 public:
  LinuxPictureBox(QWidget* pParent, const platform::ControlDesign& design,
                  platform::Docking eDocking);

  [[nodiscard]] platform::WindowHandle hWnd() const override { return m_widget->Handle(); }
  [[nodiscard]] float ScaleWidth() const override { return Width(); }

 private:
  [[nodiscard]] QWidget* ContainerWidget() override { return m_widget.get(); }
};

template <class Interface>
std::unique_ptr<platform::PictureBox> WidgetContainer<Interface>::NewPictureBox(
    const platform::ControlDesign& design, platform::Docking eDocking) {
  return std::make_unique<LinuxPictureBox>(ContainerWidget(), design, eDocking);
}

/// Places the docked children of a form's widget at their edges, over its whole width.
void DockChildren(QWidget& formWidget);

}  // namespace quillorbit::linux_adapter
