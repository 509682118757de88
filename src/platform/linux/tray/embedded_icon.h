#pragma once

#include <cstdint>
#include <functional>

#include <QImage>
#include <QObject>
#include <QString>
#include <QSystemTrayIcon>

#include "platform/linux/tray/notifications.h"

namespace quillorbit::linux_adapter {

/// An icon in a tray that embeds windows (XEmbed), and the balloons beside it.
class EmbeddedIcon final : public QObject {
 public:
  /// Gets the platform's notification codes of the mouse's buttons and of the balloons.
  using Report = std::function<void(std::uint32_t lCode)>;

  EmbeddedIcon(const QImage& image, const QString& sTip, Report report);

  void SetImage(const QImage& image);
  void SetTip(const QString& sTip);
  void ShowBalloon(const Balloon& balloon);

 private:
  bool eventFilter(QObject* pWatched, QEvent* pEvent) override;
  void MessageClicked();

  QSystemTrayIcon m_icon;
  Report m_report;
};

}  // namespace quillorbit::linux_adapter
