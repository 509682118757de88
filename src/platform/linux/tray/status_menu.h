#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>

#include <QAction>
#include <QByteArray>
#include <QMenu>
#include <QPointer>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {

/// A menu without submenus for hosts that show the menus of their items themselves
/// (com.canonical.dbusmenu, version 3). Entry 0 is the menu, entry n its n-th item.
class StatusMenu final : public QObject {
 public:
  static constexpr const char* sPath = "/MenuBar";

  /// Null is a menu without items.
  StatusMenu(SessionBus& bus, QMenu* pMenu);

 private:
  struct Interface;  ///< what the bus calls
  using Properties = std::map<std::string, std::variant<bool, QByteArray>>;

  bool eventFilter(QObject* pWatched, QEvent* pEvent) override;
  [[nodiscard]] std::int32_t ItemCount() const;
  /// None for an entry that does not exist.
  [[nodiscard]] Properties PropertiesOf(std::int32_t id) const;
  void AppendEntry(sd_bus_message* pReply, std::int32_t id) const;
  /// Does what the event that is next in the call says, once the call has been answered.
  [[nodiscard]] bool TakeEvent(sd_bus_message* pCall) const;

  SessionBus& m_bus;
  QPointer<QMenu> m_menu;
  std::uint32_t m_nRevision = 1;
};

}  // namespace quillorbit::linux_adapter
