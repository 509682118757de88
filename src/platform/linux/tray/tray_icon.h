#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include <QIcon>
#include <QMenu>
#include <QPointer>
#include <QString>
#include <QSystemTrayIcon>

#include "platform/linux/tray/notifications.h"
#include "platform/linux/tray/session_bus.h"
#include "platform/linux/tray/tray_area.h"

namespace quillorbit::linux_adapter {

/// One icon in the notification area, with its tip and balloons, there whenever the desktop has
/// such an area. What it is given it shows when the events that wait have been handled, so that a
/// datagram's handling waits for nothing. What happens to it is told in the platform's notification
/// codes.
class TrayIcon final : public QObject {
 public:
  using Tell = std::function<void(std::uint32_t lCode)>;

  /// A host that shows menus itself is given the menu.
  TrayIcon(SessionBus& bus, TrayArea& area, QMenu* pMenu, Tell tell);

  void SetIcon(const QIcon& icon);
  void SetTip(const QString& sTip);
  void ShowBalloon(const Balloon& balloon);
  /// Takes it away for good: nothing more is told. The object has to stay while it tells something.
  void Remove();

 private:
  void RequestUpdate();
  void Update();
  void Appear();
  void TellCode(std::uint32_t lCode);
  void Activated(QSystemTrayIcon::ActivationReason eReason);
  void MessageClicked();
  void ShowBesideIcon(const Balloon& balloon);

  TrayArea& m_area;
  QPointer<QMenu> m_menu;
  Tell m_tell;
  Notifications m_notifications;
  QIcon m_image;
  QString m_sTip;
  std::optional<Balloon> m_balloon;  ///< to be shown
  bool m_bUpdateRequested = false;
  bool m_bRemoved = false;
  std::unique_ptr<QSystemTrayIcon> m_icon;  ///< none while there is no area
};

}  // namespace quillorbit::linux_adapter
