#include "platform/linux/tray/notifications.h"

#include <utility>

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include "platform/shell.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sService = "org.freedesktop.Notifications";
constexpr const char* sPath = "/org/freedesktop/Notifications";
constexpr const char* sClickAction = "default";  // a click on the notification itself

/// The icons' names in the desktop's themes.
QString IconName(std::uint32_t lIcon) {
  switch (lIcon) {
    case platform::NIIF_INFO:
      return "dialog-information";
    case platform::NIIF_WARNING:
      return "dialog-warning";
    case platform::NIIF_ERROR:
      return "dialog-error";
    default:
      return {};
  }
}

bool IsNobody(QDBusError::ErrorType eError) {
  return eError == QDBusError::ServiceUnknown || eError == QDBusError::Disconnected ||
         eError == QDBusError::UnknownObject || eError == QDBusError::UnknownInterface ||
         eError == QDBusError::UnknownMethod || eError == QDBusError::Other;
}

}  // namespace

Notifications::Notifications(SessionBus& bus, Events events)
    : m_bus(bus), m_events(std::move(events)) {
  m_service.addWatchedService(sService);
  m_service.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  // Another service numbers its notifications anew.
  QObject::connect(&m_service, &QDBusServiceWatcher::serviceOwnerChanged, this,
                   [this] { m_id = 0; });
  QObject::connect(&bus, &SessionBus::Connected, this, &Notifications::Subscribe);
  if (bus.IsConnected()) Subscribe();
}

void Notifications::Subscribe() {
  m_id = 0;
  QDBusConnection connection = m_bus.Connection();
  m_service.setConnection(connection);
  connection.connect({}, sPath, sService, "ActionInvoked", this,
                     SLOT(ActionInvoked(uint, QString)));
  connection.connect({}, sPath, sService, "NotificationClosed", this,
                     SLOT(NotificationClosed(uint, uint)));
}

void Notifications::Show(const Balloon& balloon) {
  if (!m_bus.IsConnected()) return m_events.NoService(balloon);
  Call(
      "GetCapabilities", {},
      [this, balloon](const QVariantList& reply) {
        Notify(balloon, reply.value(0).toStringList());
      },
      balloon);
}

void Notifications::Notify(const Balloon& balloon, const QStringList& capabilities) {
  // Where the body is markup, the text has to be escaped; elsewhere it must not be.
  const QString sText =
      capabilities.contains("body-markup") ? balloon.sText.toHtmlEscaped() : balloon.sText;
  // A service without actions may make a dialog of a notification that has one.
  const QStringList actions =
      capabilities.contains("actions") ? QStringList{sClickAction, "Open"} : QStringList{};
  const int nTimeout = balloon.lTimeout == 0 ? -1 : static_cast<int>(balloon.lTimeout);
  const QVariantList arguments = {"Quillorbit", m_id,    IconName(balloon.lIcon), balloon.sTitle,
                                  sText,        actions, QVariantMap{},           nTimeout};
  Call(
      "Notify", arguments,
      [this](const QVariantList& reply) {
        m_id = reply.value(0).toUInt();
        m_events.Shown();
      },
      balloon);
}

/// Calls the service and goes on with its answer.
void Notifications::Call(const QString& sMethod, const QVariantList& arguments,
                         std::function<void(const QVariantList&)> onReply, const Balloon& balloon) {
  QDBusMessage call = QDBusMessage::createMethodCall(sService, sPath, sService, sMethod);
  call.setArguments(arguments);
  auto* const pWatcher = new QDBusPendingCallWatcher(m_bus.Connection().asyncCall(call), this);
  QObject::connect(pWatcher, &QDBusPendingCallWatcher::finished, this,
                   [this, pWatcher, onReply = std::move(onReply), balloon] {
                     pWatcher->deleteLater();
                     const QDBusMessage reply = pWatcher->reply();
                     if (reply.type() == QDBusMessage::ReplyMessage)
                       onReply(reply.arguments());
                     else if (IsNobody(pWatcher->error().type()))
                       m_events.NoService(balloon);
                   });
}

void Notifications::Close() {
  if (const std::uint32_t id = std::exchange(m_id, 0); id != 0 && m_bus.IsConnected()) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(sService, sPath, sService, "CloseNotification");
    call.setArguments({id});
    m_bus.Connection().asyncCall(call);
  }
}

void Notifications::ActionInvoked(uint id, const QString& sAction) {
  if (id != m_id || m_id == 0 || sAction != sClickAction) return;
  m_id = 0;
  m_events.Clicked();
}

void Notifications::NotificationClosed(uint id, uint reason) {
  if (id != m_id || m_id == 0) return;
  m_id = 0;
  constexpr uint expired = 1, dismissed = 2;
  if (reason == expired || reason == dismissed)
    m_events.TimedOut();
  else
    m_events.Hidden();
}

}  // namespace quillorbit::linux_adapter
