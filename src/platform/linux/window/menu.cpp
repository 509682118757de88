#include "platform/linux/window/menu.h"

#include <QCursor>

#include "platform/linux/window/units.h"

namespace quillorbit::linux_adapter {

LinuxMenuItem::LinuxMenuItem(QMenu& menu) {
  QObject::connect(&m_action, &QAction::triggered, &m_action, [this] {
    if (Click) Click();
  });
  menu.addAction(&m_action);
}

std::string LinuxMenuItem::Caption() const { return m_action.text().toStdString(); }

void LinuxMenuItem::Caption(std::string_view sCaption) { m_action.setText(ToQString(sCaption)); }

LinuxMenu::LinuxMenu(std::string_view sCaption) : m_menu(ToQString(sCaption)) {}

std::unique_ptr<platform::MenuItem> LinuxMenu::NewItem() {
  return std::make_unique<LinuxMenuItem>(m_menu);
}

void LinuxMenu::Popup(platform::MenuItem* pDefaultItem) {
  if (m_menu.isVisible()) return;
  auto* const pItem = static_cast<LinuxMenuItem*>(pDefaultItem);
  m_menu.setDefaultAction(pItem == nullptr ? nullptr : pItem->Action());
  m_menu.exec(QCursor::pos());
  m_menu.hide();  // the end of the program ends its loop and leaves it open
}

}  // namespace quillorbit::linux_adapter
