#include "platform/linux/tray/tray_area.h"

#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <xcb/xcb.h>

#include "platform/linux/desktop/x11.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* sWatcherPath = "/StatusNotifierWatcher";

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

  m_watchers.addWatchedService(sWatcher);
  m_watchers.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
  QObject::connect(&m_watchers, &QDBusServiceWatcher::serviceRegistered, this,
                   &TrayArea::AskForHost);
  QObject::connect(&bus, &SessionBus::Connected, this, &TrayArea::Watch);
  QObject::connect(&bus, &SessionBus::Lost, this, [this] { TakeAnswer(false); });
  if (bus.IsConnected()) Watch();
  Decide();
}

TrayArea::~TrayArea() { QCoreApplication::instance()->removeNativeEventFilter(this); }

void TrayArea::Watch() {
  QDBusConnection connection = m_bus.Connection();
  m_watchers.setConnection(connection);
  connection.connect({}, sWatcherPath, sWatcher, "StatusNotifierHostRegistered", this,
                     SLOT(AskForHost()));
  AskForHost();
}

/// The toolkit puts the same question at its first icon and waits for the answer, so it has to come
/// here first, however long it takes.
void TrayArea::AskForHost() {
  m_bAsking = true;
  QDBusMessage question = QDBusMessage::createMethodCall(sWatcher, sWatcherPath,
                                                         "org.freedesktop.DBus.Properties", "Get");
  question.setArguments({sWatcher, "IsStatusNotifierHostRegistered"});
  question.setAutoStartService(false);
  constexpr int noTimeout = std::numeric_limits<int>::max();
  auto* const pAnswer =
      new QDBusPendingCallWatcher(m_bus.Connection().asyncCall(question, noTimeout), this);
  QObject::connect(pAnswer, &QDBusPendingCallWatcher::finished, this, [this, pAnswer] {
    pAnswer->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *pAnswer;
    TakeAnswer(!reply.isError() && reply.value().variant().toBool());
  });
}

void TrayArea::TakeAnswer(bool bHost) {
  m_bHost = bHost;
  m_bAsking = false;
  Decide();
}

void TrayArea::Decide() {
  if (m_eSettled == Kind::None && m_bHost) m_eSettled = Kind::StatusNotifier;
  if (m_eSettled == Kind::None && m_bTray && !m_bAsking) m_eSettled = Kind::XEmbed;
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
