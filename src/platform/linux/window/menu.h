#pragma once

#include <QAction>
#include <QMenu>

#include "platform/menu.h"

namespace quillorbit::linux_adapter {

class LinuxMenuItem final : public platform::MenuItem {
 public:
  explicit LinuxMenuItem(QMenu& menu);

  [[nodiscard]] std::string Caption() const override;
  void Caption(std::string_view sCaption) override;
  void Visible(bool bVisible) override { m_action.setVisible(bVisible); }
  void Enabled(bool bEnabled) override { m_action.setEnabled(bEnabled); }

  [[nodiscard]] QAction* Action() { return &m_action; }

 private:
  QAction m_action;
};

/// A popup menu. A notification area that shows menus itself is given the widget.
class LinuxMenu final : public platform::Menu {
 public:
  explicit LinuxMenu(std::string_view sCaption);

  [[nodiscard]] std::unique_ptr<platform::MenuItem> NewItem() override;

  /// Shows it at the mouse cursor and returns when it has closed. Does nothing when it is open.
  void Popup(platform::MenuItem* pDefaultItem);
  [[nodiscard]] QMenu* Widget() { return &m_menu; }

 private:
  QMenu m_menu;
};

}  // namespace quillorbit::linux_adapter
