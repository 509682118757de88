#pragma once

#include <memory>
#include <stdexcept>

#include <QWidget>

#include "platform/controls.h"
#include "platform/linux/window/units.h"

namespace quillorbit::linux_adapter {

/// The widget's property that holds its control's tab index; 0 is a valid one.
inline constexpr const char* sTabIndexProperty = "tabIndex";

/// What every control has in common, on top of its widget.
template <class Interface, class Widget>
class WidgetControl : public Interface {
 public:
  [[nodiscard]] float Left() const override { return ToTwips(m_widget->x()); }
  void Left(float fLeft) override { m_widget->move(ToPixels(fLeft), m_widget->y()); }
  [[nodiscard]] float Width() const override { return ToTwips(m_widget->width()); }
  void Width(float fWidth) override {
    if (fWidth < 0) throw std::invalid_argument("A width cannot be negative");
    m_widget->resize(ToPixels(fWidth), m_widget->height());
  }
  [[nodiscard]] float Height() const override { return ToTwips(m_widget->height()); }
  void Move(float fLeft, float fTop, float fWidth, float fHeight) override {
    if (fWidth < 0 || fHeight < 0) throw std::invalid_argument("A size cannot be negative");
    m_widget->setGeometry(ToPixels(fLeft), ToPixels(fTop), ToPixels(fWidth), ToPixels(fHeight));
  }
  void Visible(bool bVisible) override { m_widget->setVisible(bVisible); }

 protected:
  WidgetControl(std::unique_ptr<Widget> widget, const platform::ControlDesign& design)
      : m_widget(std::move(widget)) {
    m_widget->setObjectName(ToQString(design.sName));
    m_widget->setProperty(sTabIndexProperty, design.iTabIndex);
    m_widget->setFont(ToQFont(design.font));
    m_widget->setGeometry(ToPixels(design.fLeft), ToPixels(design.fTop), ToPixels(design.fWidth),
                          ToPixels(design.fHeight));
  }

  std::unique_ptr<Widget> m_widget;
};

}  // namespace quillorbit::linux_adapter
