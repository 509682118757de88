#include "platform/linux/tray/tray_area.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

#include <QCoreApplication>
#include <xcb/xcb.h>

#include "platform/linux/desktop/x11.h"

namespace quillorbit::linux_adapter {
namespace {

using namespace std::chrono_literals;

constexpr const char* sWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* sWatcherPath = "/StatusNotifierWatcher";

}  // namespace

TrayArea::TrayArea(SessionBus& bus) : m_bus(bus) {
  FindTray();
  m_start.setSingleShot(true);
  QObject::connect(&m_start, &QTimer::timeout, this, &TrayArea::Decide);
  if (!bus.IsAbsent()) m_start.start(1s);
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
  const std::string sName = sWatcher;
  m_bus.Subscribe(
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + sName + "'",
      [this](auto*) {
        TakeAnswer(false);
        AskForHost();
      });
  for (const char* sMember : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    m_bus.Subscribe("type='signal',sender='" + sName + "',member='" + sMember + "'",
                    [this](auto*) { AskForHost(); });
  AskForHost();
}

void TrayArea::AskForHost() {
  BusMessage question =
      m_bus.NewCall(sWatcher, sWatcherPath, "org.freedesktop.DBus.Properties", "Get");
  sd_bus_message_append(question.get(), "ss", sWatcher, "IsStatusNotifierHostRegistered");
  sd_bus_message_set_auto_start(question.get(), 0);
  const auto takeReply = [this](sd_bus_message* pReply) {
    int bHost = 0;
    if (!IsError(pReply) && sd_bus_message_read(pReply, "v", "b", &bHost) > 0 && bHost != 0)
      RegisterItem();
    else
      TakeAnswer(false);
  };
  m_bus.Call(std::move(question), takeReply, SessionBus::usNoLimit);
}

void TrayArea::RegisterItem() {
  BusMessage call = m_bus.NewCall(sWatcher, sWatcherPath, sWatcher, "RegisterStatusNotifierItem");
  sd_bus_message_append(call.get(), "s", m_bus.Name());
  m_bus.Call(
      std::move(call), [this](sd_bus_message* pReply) { TakeAnswer(!IsError(pReply)); },
      SessionBus::usNoLimit);
}

void TrayArea::TakeAnswer(bool bHost) {
  m_start.stop();
  m_bHost = bHost;
  Decide();
}

void TrayArea::Decide() {
  const bool bEmbedding = m_bTray && !m_bHost && !m_start.isActive();
  if (bEmbedding != std::exchange(m_bEmbedding, bEmbedding)) emit Changed();
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
