#include "platform/linux/tray_area.h"

#include <cstdlib>
#include <string>
#include <utility>

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <xcb/xcb.h>

#include "platform/linux/x11.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sHostService = "org.kde.StatusNotifierWatcher";

}  // namespace

TrayArea::TrayArea(SessionBus& bus) : m_bus(bus) {
  if (xcb_connection_t* const pX = x11::ToolkitConnection()) {
    int nDisplay = 0, nScreen = 0;
    char* sHost = nullptr;
    if (xcb_parse_display(nullptr, &sHost, &nDisplay, &nScreen) != 0) std::free(sHost);
    m_manager = x11::InternAtom(pX, "MANAGER");
    m_selection = x11::InternAtom(pX, "_NET_SYSTEM_TRAY_S" + std::to_string(nScreen));
    const x11::Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(pX, xcb_get_selection_owner(pX, m_selection), nullptr));
    m_bTray = owner && owner->owner != XCB_WINDOW_NONE;
    QCoreApplication::instance()->installNativeEventFilter(this);
  }

  m_hosts.addWatchedService(sHostService);
  m_hosts.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
  QObject::connect(&m_hosts, &QDBusServiceWatcher::serviceRegistered, this, [this] {
    m_bHost = true;
    Decide();
  });
  QObject::connect(&bus, &SessionBus::Connected, this, &TrayArea::LookForHost);
  QObject::connect(&bus, &SessionBus::Lost, this, [this] {
    m_bHost = false;
    Decide();
  });
  if (bus.IsConnected()) {
    m_hosts.setConnection(bus.Connection());
    m_bHost = bus.Connection().interface()->isServiceRegistered(sHostService);
  }
  Decide();
}

TrayArea::~TrayArea() { QCoreApplication::instance()->removeNativeEventFilter(this); }

void TrayArea::LookForHost() {
  m_hosts.setConnection(m_bus.Connection());
  QDBusMessage question = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner");
  question.setArguments({sHostService});
  auto* const pWatcher = new QDBusPendingCallWatcher(m_bus.Connection().asyncCall(question), this);
  QObject::connect(pWatcher, &QDBusPendingCallWatcher::finished, this, [this, pWatcher] {
    pWatcher->deleteLater();
    if (!pWatcher->reply().arguments().value(0).toBool()) return;
    m_bHost = true;
    Decide();
  });
}

void TrayArea::Decide() {
  if (m_eSettled == Kind::None && m_bHost) m_eSettled = Kind::StatusNotifier;
  if (m_eSettled == Kind::None && m_bTray) m_eSettled = Kind::XEmbed;
  const Kind eKind = m_eSettled == Kind::StatusNotifier && !m_bHost ? Kind::None : m_eSettled;
  if (eKind == std::exchange(m_eKind, eKind)) return;
  emit Changed();
}

/// A new tray announces itself to all; the toolkit has asked for the root window's messages.
bool TrayArea::nativeEventFilter(const QByteArray& eventType, void* pMessage, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* const pEvent = static_cast<const xcb_client_message_event_t*>(pMessage);
  if ((pEvent->response_type & 0x7F) != XCB_CLIENT_MESSAGE || pEvent->type != m_manager ||
      pEvent->format != 32 || pEvent->data.data32[1] != m_selection)
    return false;
  m_bTray = true;
  QMetaObject::invokeMethod(this, &TrayArea::Decide, Qt::QueuedConnection);
  return false;
}

}  // namespace quillorbit::linux_adapter
