#pragma once

#include "platform/linux/window/presenter.h"
#include "platform/linux/window/widget_control.h"

namespace quillorbit::linux_adapter {

/// A label that is cheap to set: a setter only stores the value. The widget is updated when the
/// label is presented or its size is read.
class LinuxLabel final : public WidgetControl<platform::Label, QWidget>, private Presented {
 public:
  LinuxLabel(QWidget* pParent, const platform::ControlDesign& design, platform::LabelKind eKind,
             std::string_view sCaption);

  [[nodiscard]] float Width() const override;
  [[nodiscard]] float Height() const override;
  using WidgetControl::Width;
  [[nodiscard]] std::string Caption() const override { return m_sCaption; }
  void Caption(std::string_view sCaption) override;
  void BackColor(platform::Colour colour) override;

 private:
  class Face;

  void Present() override;
  void FitToCaption() const;

  const platform::LabelKind m_eKind;
  std::string m_sCaption;
  platform::Colour m_backColor = 0xFFFFFF;
  mutable bool m_bFits = false;  ///< the widget has the caption and, if it sizes itself, the size
};

}  // namespace quillorbit::linux_adapter
