#pragma once

#include <QLineEdit>

#include "platform/linux/window/widget_control.h"

namespace quillorbit::linux_adapter {

/// A single-line text box whose validation can keep the focus in it.
///
/// The focus can leave in three ways, each handled in its own place: by Tab, where the next widget
/// is chosen; by a press on another control, before that control gets the press, which would click
/// it all the same; and in any other way after the fact, by taking the focus back. When the window
/// itself loses the focus, to another program or a menu, nothing is validated.
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
