#include "platform/linux/tray/notifications.h"

#include <string_view>
#include <utility>

#include "platform/shell.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sService = "org.freedesktop.Notifications";
constexpr const char* sPath = "/org/freedesktop/Notifications";
constexpr const char* sClickAction = "default";  // a click on the notification itself
constexpr std::uint64_t usAlternativeAfter = 1'000'000;

/// The icons' names in the desktop's themes.
const char* IconName(std::uint32_t lIcon) {
  switch (lIcon) {
    case platform::NIIF_INFO:
      return "dialog-information";
    case platform::NIIF_WARNING:
      return "dialog-warning";
    case platform::NIIF_ERROR:
      return "dialog-error";
    default:
      return "";
  }
}

std::set<std::string> ReadTexts(sd_bus_message* pReply) {
  std::set<std::string> texts;
  sd_bus_message_enter_container(pReply, 'a', "s");
  for (const char* sText = nullptr; sd_bus_message_read(pReply, "s", &sText) > 0;)
    texts.emplace(sText);
  return texts;
}

}  // namespace

Notifications::Notifications(SessionBus& bus, Events events)
    : m_bus(bus), m_events(std::move(events)) {
  QObject::connect(&bus, &SessionBus::Connected, this, &Notifications::Subscribe);
}

void Notifications::Subscribe() {
  m_id = 0;
  const std::string sName = sService;
  const std::string sFromService = "type='signal',sender='" + sName + "',member='";
  m_bus.Subscribe(sFromService + "ActionInvoked'",
                  [this](auto* pSignal) { ActionInvoked(pSignal); });
  m_bus.Subscribe(sFromService + "NotificationClosed'",
                  [this](auto* pSignal) { NotificationClosed(pSignal); });
  // Another service numbers its notifications anew.
  m_bus.Subscribe(
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + sName + "'",
      [this](auto*) { m_id = 0; });
}

void Notifications::Show(const Balloon& balloon, bool bAlternative) {
  if (!m_bus.IsConnected()) return m_events.NoService(balloon);
  m_bus.Call(
      m_bus.NewCall(sService, sPath, sService, "GetCapabilities"),
      [this, balloon](sd_bus_message* pReply) {
        if (IsError(pReply)) return m_events.NoService(balloon);
        Notify(balloon, ReadTexts(pReply));
      },
      bAlternative ? usAlternativeAfter : SessionBus::usDefault);
}

void Notifications::Notify(const Balloon& balloon, const std::set<std::string>& capabilities) {
  // Where the body is markup, the text has to be escaped; elsewhere it must not be.
  const QString sText =
      capabilities.contains("body-markup") ? balloon.sText.toHtmlEscaped() : balloon.sText;
  const int nTimeout = balloon.lTimeout == 0 ? -1 : static_cast<int>(balloon.lTimeout);
  BusMessage call = m_bus.NewCall(sService, sPath, sService, "Notify");
  sd_bus_message_append(call.get(), "susss", "Quillorbit", m_id, IconName(balloon.lIcon),
                        balloon.sTitle.toUtf8().constData(), sText.toUtf8().constData());
  // A service without actions may make a dialog of a notification that has one.
  if (capabilities.contains("actions"))
    sd_bus_message_append(call.get(), "as", 2, sClickAction, "Open");
  else
    sd_bus_message_append(call.get(), "as", 0);
  sd_bus_message_append(call.get(), "a{sv}i", 0, nTimeout);
  m_bus.Call(std::move(call), [this, balloon](sd_bus_message* pReply) {
    if (IsError(pReply)) {
      // A service that is late may still show it.
      if (sd_bus_message_is_method_error(pReply, SD_BUS_ERROR_NO_REPLY) <= 0)
        m_events.NoService(balloon);
      return;
    }
    sd_bus_message_read(pReply, "u", &m_id);
    m_events.Shown();
  });
}

void Notifications::Close() {
  const std::uint32_t id = std::exchange(m_id, 0);
  if (id == 0) return;
  BusMessage call = m_bus.NewCall(sService, sPath, sService, "CloseNotification");
  sd_bus_message_append(call.get(), "u", id);
  m_bus.Call(std::move(call));
}

bool Notifications::IsOwn(sd_bus_message* pSignal) const {
  std::uint32_t id = 0;
  return sd_bus_message_read(pSignal, "u", &id) > 0 && id != 0 && id == m_id;
}

void Notifications::ActionInvoked(sd_bus_message* pSignal) {
  const char* sAction = nullptr;
  if (!IsOwn(pSignal) || sd_bus_message_read(pSignal, "s", &sAction) <= 0 ||
      std::string_view(sAction) != sClickAction)
    return;
  m_id = 0;
  m_events.Clicked();
}

void Notifications::NotificationClosed(sd_bus_message* pSignal) {
  std::uint32_t reason = 0;
  if (!IsOwn(pSignal) || sd_bus_message_read(pSignal, "u", &reason) <= 0) return;
  m_id = 0;
  constexpr std::uint32_t expired = 1, dismissed = 2;
  if (reason == expired || reason == dismissed)
    m_events.TimedOut();
  else
    m_events.Hidden();
}

}  // namespace quillorbit::linux_adapter
