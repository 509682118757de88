#include "platform/linux/tray/tray_area.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

#include <QCoreApplication>
#include <xcb/xcb.h>

#include "platform/linux/desktop/x11.h"
#include "platform/linux/tray/status_item.h"

namespace quillorbit::linux_adapter {

using namespace std::chrono_literals;

TrayArea::TrayArea(SessionBus& bus) : m_bus(bus) {
  FindTray();
  m_limit.setSingleShot(true);
  QObject::connect(&m_limit, &QTimer::timeout, this, &TrayArea::Decide);
  if (!bus.IsAbsent()) m_limit.start(1s);
  QObject::connect(&bus, &SessionBus::Connected, this, &TrayArea::Watch);
  QObject::connect(&bus, &SessionBus::Lost, this, [this] { TakeAnswer(false); });
  Decide();
}

TrayArea::~TrayArea() { QCoreApplication::instance()->removeNativeEventFilter(this); }

void TrayArea::FindTray() {
  xcb_connection_t* const pX = x11::ToolkitConnection();
  if (pX == nullptr) return;
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

void TrayArea::Watch() {
  const auto onSignal = [this](const std::string& sMatch, bool bRestarted) {
    m_bus.Subscribe("type='signal'," + sMatch, [this, bRestarted](sd_bus_message*) {
      if (bRestarted) TakeAnswer(false);
      AskForHost();
    });
  };
  const std::string sWatcher = sWatcherService;
  onSignal("sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + sWatcher + "'", true);
  for (const char* sMember : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    onSignal("sender='" + sWatcher + "',member='" + sMember + "'", false);
  AskForHost();
}

void TrayArea::AskForHost() {
  BusMessage question =
      m_bus.NewCall(sWatcherService, sWatcherPath, "org.freedesktop.DBus.Properties", "Get");
  sd_bus_message_append(question.get(), "ss", sWatcherService, "IsStatusNotifierHostRegistered");
  sd_bus_message_set_auto_start(question.get(), 0);
  const auto takeReply = [this](sd_bus_message* pReply) {
    int bHost = 0;
    TakeAnswer(pReply != nullptr && sd_bus_message_is_method_error(pReply, nullptr) == 0 &&
               sd_bus_message_read(pReply, "v", "b", &bHost) >= 0 && bHost != 0);
  };
  m_bus.Call(std::move(question), takeReply, SessionBus::usNoLimit);
}

void TrayArea::TakeAnswer(bool bHost) {
  m_limit.stop();
  m_bHost = bHost;
  Decide();
}

void TrayArea::Decide() {
  const bool bEmbed = m_bTray && !m_limit.isActive();
  const Kind eKind = m_bHost ? Kind::StatusNotifier : bEmbed ? Kind::XEmbed : Kind::None;
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
