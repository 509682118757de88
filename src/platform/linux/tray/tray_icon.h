#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QImage>
#include <QMenu>
#include <QString>

#include "platform/linux/tray/embedded_icon.h"
#include "platform/linux/tray/notifications.h"
#include "platform/linux/tray/session_bus.h"
#include "platform/linux/tray/status_item.h"
#include "platform/linux/tray/tray_area.h"

namespace quillorbit::linux_adapter {

/// One icon in the notification area, with its tip and balloons, there whenever the desktop has
/// such an area. What it is given it shows when the events that wait have been handled, so that a
/// datagram's handling waits for nothing. What happens to it is reported in the platform's
/// notification codes.
class TrayIcon final : public QObject {
 public:
  using Report = std::function<void(std::uint32_t lCode)>;

  /// A host that shows menus itself is given the menu.
  TrayIcon(const std::string& sBusAddress, QMenu* pMenu, Report report);

  void SetImage(const QImage& image);
  void SetTip(const QString& sTip);
  void ShowBalloon(const Balloon& balloon);
  /// Takes it away for good: nothing more is reported. The object has to stay until a report
  /// returns.
  void Remove();

 private:
  void RequestUpdate();
  void Update();
  void ReportCode(std::uint32_t lCode);

  SessionBus m_bus;  ///< its own: a host keeps the icon until the connection ends
  TrayArea m_area;
  Report m_report;
  StatusItem m_item;
  Notifications m_notifications;
  QImage m_image;
  QString m_sTip;
  std::optional<Balloon> m_balloon;  ///< to be shown
  bool m_bUpdateRequested = false;
  bool m_bRemoved = false;
  std::unique_ptr<EmbeddedIcon> m_embedded;  ///< only where there is no host for the item
};

}  // namespace quillorbit::linux_adapter
