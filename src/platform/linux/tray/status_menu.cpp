#include "platform/linux/tray/status_menu.h"

#include <cerrno>
#include <string_view>

#include <QEvent>

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sInterface = "com.canonical.dbusmenu";
constexpr std::int32_t nRoot = 0;

/// Menus here mark the access key by "&" before it, those of the hosts by "_".
QByteArray Label(const QString& sCaption) {
  QString sLabel;
  for (qsizetype i = 0; i < sCaption.size(); ++i) {
    const bool bMark = sCaption[i] == '&';
    if (bMark && ++i == sCaption.size()) break;
    if (bMark && sCaption[i] != '&') sLabel += '_';
    sLabel += sCaption[i];
    if (sCaption[i] == '_') sLabel += '_';
  }
  return sLabel.toUtf8();
}

void AppendValue(sd_bus_message* pReply, const std::variant<bool, QByteArray>& value) {
  if (const bool* const pFlag = std::get_if<bool>(&value))
    sd_bus_message_append(pReply, "v", "b", static_cast<int>(*pFlag));
  else
    sd_bus_message_append(pReply, "v", "s", std::get<QByteArray>(value).constData());
}

template <class Properties>
void AppendProperties(sd_bus_message* pReply, const Properties& properties) {
  sd_bus_message_open_container(pReply, 'a', "{sv}");
  for (const auto& [sName, value] : properties) {
    sd_bus_message_open_container(pReply, 'e', "sv");
    sd_bus_message_append(pReply, "s", sName.c_str());
    AppendValue(pReply, value);
    sd_bus_message_close_container(pReply);
  }
  sd_bus_message_close_container(pReply);
}

BusMessage NewReply(sd_bus_message* pCall) {
  sd_bus_message* pReply = nullptr;
  sd_bus_message_new_method_return(pCall, &pReply);
  return BusMessage(pReply);
}

int Send(const BusMessage& reply) { return sd_bus_send(nullptr, reply.get(), nullptr); }

}  // namespace

/// sd-bus answers with the error that a handler returns.
struct StatusMenu::Interface {
  static const StatusMenu& Of(void* pMenu) { return *static_cast<StatusMenu*>(pMenu); }

  /// Whatever properties are asked for, all are sent.
  static int GetLayout(sd_bus_message* pCall, void* pMenu, sd_bus_error*) {
    std::int32_t id = 0, nDepth = 0;
    if (const int nResult = sd_bus_message_read(pCall, "ii", &id, &nDepth); nResult < 0)
      return nResult;
    if (Of(pMenu).PropertiesOf(id).empty()) return -EINVAL;
    const BusMessage reply = NewReply(pCall);
    sd_bus_message_append(reply.get(), "u", Of(pMenu).m_nRevision);
    sd_bus_message_open_container(reply.get(), 'r', "ia{sv}av");
    Of(pMenu).AppendEntry(reply.get(), id);
    sd_bus_message_open_container(reply.get(), 'a', "v");
    for (std::int32_t i = 1; id == nRoot && nDepth != 0 && i <= Of(pMenu).ItemCount(); ++i) {
      sd_bus_message_open_container(reply.get(), 'v', "(ia{sv}av)");
      sd_bus_message_open_container(reply.get(), 'r', "ia{sv}av");
      Of(pMenu).AppendEntry(reply.get(), i);
      sd_bus_message_append(reply.get(), "av", 0);
      sd_bus_message_close_container(reply.get());
      sd_bus_message_close_container(reply.get());
    }
    sd_bus_message_close_container(reply.get());
    sd_bus_message_close_container(reply.get());
    return Send(reply);
  }

  static int GetGroupProperties(sd_bus_message* pCall, void* pMenu, sd_bus_error*) {
    const BusMessage reply = NewReply(pCall);
    sd_bus_message_open_container(reply.get(), 'a', "(ia{sv})");
    sd_bus_message_enter_container(pCall, 'a', "i");
    for (std::int32_t id = 0; sd_bus_message_read(pCall, "i", &id) > 0;) {
      if (Of(pMenu).PropertiesOf(id).empty()) continue;
      sd_bus_message_open_container(reply.get(), 'r', "ia{sv}");
      Of(pMenu).AppendEntry(reply.get(), id);
      sd_bus_message_close_container(reply.get());
    }
    sd_bus_message_close_container(reply.get());
    return Send(reply);
  }

  static int GetProperty(sd_bus_message* pCall, void* pMenu, sd_bus_error*) {
    std::int32_t id = 0;
    const char* sName = nullptr;
    if (const int nResult = sd_bus_message_read(pCall, "is", &id, &sName); nResult < 0)
      return nResult;
    const Properties properties = Of(pMenu).PropertiesOf(id);
    const auto property = properties.find(sName);
    if (property == properties.end()) return -EINVAL;
    const BusMessage reply = NewReply(pCall);
    AppendValue(reply.get(), property->second);
    return Send(reply);
  }

  static int Event(sd_bus_message* pCall, void* pMenu, sd_bus_error*) {
    return Of(pMenu).TakeEvent(pCall) ? sd_bus_reply_method_return(pCall, nullptr) : -EINVAL;
  }

  static int EventGroup(sd_bus_message* pCall, void* pMenu, sd_bus_error*) {
    sd_bus_message_enter_container(pCall, 'a', "(isvu)");
    while (sd_bus_message_enter_container(pCall, 'r', "isvu") > 0) {
      if (!Of(pMenu).TakeEvent(pCall)) return -EINVAL;
      sd_bus_message_exit_container(pCall);
    }
    return sd_bus_reply_method_return(pCall, "ai", 0);
  }

  static int AboutToShow(sd_bus_message* pCall, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(pCall, "b", 0);
  }

  static int AboutToShowGroup(sd_bus_message* pCall, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(pCall, "aiai", 0, 0);
  }

  static int ReadProperty(sd_bus*, const char*, const char*, const char* sProperty,
                          sd_bus_message* pReply, void*, sd_bus_error*) {
    const std::string_view sName = sProperty;
    if (sName == "Version") return sd_bus_message_append(pReply, "u", 3);
    if (sName == "IconThemePath") return sd_bus_message_append(pReply, "as", 0);
    return sd_bus_message_append(pReply, "s", sName == "TextDirection" ? "ltr" : "normal");
  }

  static constexpr sd_bus_vtable table[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", GetLayout, 0),
      SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", GetGroupProperties, 0),
      SD_BUS_METHOD("GetProperty", "is", "v", GetProperty, 0),
      SD_BUS_METHOD("Event", "isvu", "", Event, 0),
      SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", EventGroup, 0),
      SD_BUS_METHOD("AboutToShow", "i", "b", AboutToShow, 0),
      SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", AboutToShowGroup, 0),
      SD_BUS_PROPERTY("Version", "u", ReadProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("TextDirection", "s", ReadProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("Status", "s", ReadProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("IconThemePath", "as", ReadProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
      SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
      SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
      SD_BUS_VTABLE_END};
};

StatusMenu::StatusMenu(SessionBus& bus, QMenu* pMenu) : m_bus(bus), m_menu(pMenu) {
  const auto publish = [this] {
    m_bus.Export(sPath, sInterface, static_cast<const sd_bus_vtable*>(Interface::table), this);
  };
  QObject::connect(&bus, &SessionBus::Connected, this, publish);
  if (pMenu != nullptr) pMenu->installEventFilter(this);
}

bool StatusMenu::eventFilter(QObject*, QEvent* pEvent) {
  const QEvent::Type eType = pEvent->type();
  if (eType == QEvent::ActionAdded || eType == QEvent::ActionChanged ||
      eType == QEvent::ActionRemoved)
    m_bus.Emit(sPath, sInterface, "LayoutUpdated", "ui", ++m_nRevision, nRoot);
  return false;
}

std::int32_t StatusMenu::ItemCount() const {
  return m_menu ? static_cast<std::int32_t>(m_menu->actions().size()) : 0;
}

StatusMenu::Properties StatusMenu::PropertiesOf(std::int32_t id) const {
  if (id == nRoot) return {{"children-display", QByteArray("submenu")}};
  if (id < 1 || id > ItemCount()) return {};
  const QAction* const pItem = m_menu->actions().at(id - 1);
  return {{"label", Label(pItem->text())},
          {"enabled", pItem->isEnabled()},
          {"visible", pItem->isVisible()}};
}

void StatusMenu::AppendEntry(sd_bus_message* pReply, std::int32_t id) const {
  sd_bus_message_append(pReply, "i", id);
  AppendProperties(pReply, PropertiesOf(id));
}

bool StatusMenu::TakeEvent(sd_bus_message* pCall) const {
  std::int32_t id = 0;
  const char* sEvent = nullptr;
  if (sd_bus_message_read(pCall, "is", &id, &sEvent) < 0 || sd_bus_message_skip(pCall, "vu") < 0)
    return false;
  if (std::string_view(sEvent) == "clicked" && id >= 1 && id <= ItemCount())
    QMetaObject::invokeMethod(m_menu->actions().at(id - 1), &QAction::trigger,
                              Qt::QueuedConnection);
  return true;
}

}  // namespace quillorbit::linux_adapter
