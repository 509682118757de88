#pragma once

#include <cstdint>
#include <functional>

#include <QImage>
#include <QMenu>
#include <QString>

#include "platform/linux/tray/session_bus.h"
#include "platform/linux/tray/status_menu.h"

namespace quillorbit::linux_adapter {

/// An icon for StatusNotifierItem hosts: an object on the session bus whose picture and tip a host
/// reads and whose methods it calls when the user clicks. A connection carries one item, which
/// hosts keep until the connection ends.
class StatusItem final : public QObject {
 public:
  /// Gets the platform's notification codes of a click.
  using Report = std::function<void(std::uint32_t lCode)>;

  /// A host that shows menus itself is given the menu, which may be null.
  StatusItem(SessionBus& bus, QMenu* pMenu, Report report);

  void SetImage(const QImage& image);
  void SetTip(const QString& sTip);

 private:
  struct Interface;  ///< what the bus calls

  SessionBus& m_bus;
  Report m_report;
  QImage m_image;
  QString m_sTip;
  StatusMenu m_menu;
};

}  // namespace quillorbit::linux_adapter
