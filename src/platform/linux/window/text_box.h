#pragma once

#include <QLineEdit>

#include "platform/linux/window/widget_control.h"

namespace quillorbit::linux_adapter {

/// A single-line text box that its validation can keep the focus in.
///
/// The focus leaves by Tab, by a press on another control, or in some other way, and each has to be
/// caught at its own place: Tab where the next widget is chosen; the press before the other control
/// sees it, or that control would be clicked all the same; the rest when the focus is gone, to be
/// fetched back. The window's own comings and goings (another program, a menu) are no leaving.
class LinuxTextBox final : public WidgetControl<platform::TextBox, QLineEdit> {
 public:
  LinuxTextBox(QWidget* pParent, const platform::ControlDesign& design, std::string_view sText);

  [[nodiscard]] std::string Text() const override;
  void Text(std::string_view sText) override;
  void SelStart(int iStart) override;
  void SelLength(int iLength) override;

 private:
  class Edit;

  int m_iSelStart = 0;
};

}  // namespace quillorbit::linux_adapter
