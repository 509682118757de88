#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include <QObject>
#include <QString>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {

/// A balloon: what the notification record says of it.
struct Balloon {
  QString sTitle, sText;
  std::uint32_t lIcon;     ///< the platform's balloon icon value
  std::uint32_t lTimeout;  ///< milliseconds; 0 leaves it to the desktop
};

/// One balloon at a time as a desktop notification (org.freedesktop.Notifications, version 1.2).
class Notifications final : public QObject {
 public:
  struct Events {
    std::function<void()> Shown, Hidden, TimedOut, Clicked;
    std::function<void(const Balloon&)> NoService;  ///< nobody shows this notification
  };

  Notifications(SessionBus& bus, Events events);

  /// Shows a balloon in the place of the last one. Where there is something to show it instead, a
  /// service that has not answered within a second counts as none.
  void Show(const Balloon& balloon, bool bAlternative);
  void Close();

 private:
  void Subscribe();
  void Notify(const Balloon& balloon, const std::set<std::string>& capabilities);
  /// Whether a signal is about the notification that is shown; its first argument has been read.
  bool IsOwn(sd_bus_message* pSignal) const;
  void ActionInvoked(sd_bus_message* pSignal);
  void NotificationClosed(sd_bus_message* pSignal);

  SessionBus& m_bus;
  Events m_events;
  std::uint32_t m_id = 0;  ///< of the notification that is shown; 0 is none
};

}  // namespace quillorbit::linux_adapter
