#pragma once

#include <cstdint>
#include <functional>

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {

/// A balloon: what the notification record says of it.
struct Balloon {
  QString sTitle, sText;
  std::uint32_t lIcon;     ///< the platform's balloon icon value
  std::uint32_t lTimeout;  ///< milliseconds; 0 leaves it to the desktop
};

/// One balloon at a time as a desktop notification (org.freedesktop.Notifications, version 1.2). It
/// waits for no answer: a service that never gives one costs its balloons only.
class Notifications final : public QObject {
  Q_OBJECT

 public:
  struct Events {
    std::function<void()> Shown, Hidden, TimedOut, Clicked;
    std::function<void(const Balloon&)> NoService;  ///< nobody shows notifications here
  };

  Notifications(SessionBus& bus, Events events);

  /// Shows a balloon in the place of the last one.
  void Show(const Balloon& balloon);
  void Close();

 private slots:
  void ActionInvoked(uint id, const QString& sAction);
  void NotificationClosed(uint id, uint reason);

 private:
  void Subscribe();
  void Call(const QString& sMethod, const QVariantList& arguments,
            std::function<void(const QVariantList&)> onReply, const Balloon& balloon);
  void Notify(const Balloon& balloon, const QStringList& capabilities);

  SessionBus& m_bus;
  Events m_events;
  QDBusServiceWatcher m_service;
  std::uint32_t m_id = 0;  ///< of the notification that is shown; 0 is none
};

}  // namespace quillorbit::linux_adapter
