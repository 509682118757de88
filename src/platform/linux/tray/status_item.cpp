#include "platform/linux/tray/status_item.h"

#include <map>
#include <string_view>
#include <utility>

#include <QtEndian>

#include "platform/shell.h"

namespace quillorbit::linux_adapter {
namespace {

using namespace platform;  // the notification codes

constexpr const char* sPath = "/StatusNotifierItem";
constexpr const char* sInterface = "org.kde.StatusNotifierItem";

}  // namespace

struct StatusItem::Interface {
  static const StatusItem& Of(void* pItem) { return *static_cast<StatusItem*>(pItem); }

  template <std::uint32_t lPress, std::uint32_t lRelease>
  static int Click(sd_bus_message* pCall, void* pItem, sd_bus_error*) {
    const StatusItem& item = Of(pItem);
    item.m_report(lPress);
    item.m_report(lRelease);
    return sd_bus_reply_method_return(pCall, nullptr);
  }

  static int Ignore(sd_bus_message* pCall, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(pCall, nullptr);
  }

  static int ReadText(sd_bus*, const char*, const char*, const char* sProperty,
                      sd_bus_message* pReply, void*, sd_bus_error*) {
    static const std::map<std::string_view, const char*> texts = {{"Category", "ApplicationStatus"},
                                                                  {"Id", "quillorbit"},
                                                                  {"Title", "Quillorbit"},
                                                                  {"Status", "Active"}};
    const auto text = texts.find(sProperty);
    return sd_bus_message_append(pReply, "s", text == texts.end() ? "" : text->second);
  }

  /// No window, and an item that is more than its menu.
  static int ReadNumber(sd_bus*, const char*, const char*, const char* sProperty,
                        sd_bus_message* pReply, void*, sd_bus_error*) {
    return sd_bus_message_append(pReply, std::string_view(sProperty) == "WindowId" ? "i" : "b", 0);
  }

  static int ReadMenu(sd_bus*, const char*, const char*, const char*, sd_bus_message* pReply, void*,
                      sd_bus_error*) {
    return sd_bus_message_append(pReply, "o", StatusMenu::sPath);
  }

  /// Pictures are width, height and the pixels as ARGB in network byte order.
  static int ReadImage(sd_bus*, const char*, const char*, const char* sProperty,
                       sd_bus_message* pReply, void* pItem, sd_bus_error*) {
    const QImage& shown = Of(pItem).m_image;
    if (std::string_view(sProperty) != "IconPixmap" || shown.isNull())
      return sd_bus_message_append(pReply, "a(iiay)", 0);
    QImage image = shown.convertToFormat(QImage::Format_ARGB32);
    qToBigEndian<quint32>(image.constBits(), image.sizeInBytes() / 4, image.bits());
    sd_bus_message_open_container(pReply, 'a', "(iiay)");
    sd_bus_message_open_container(pReply, 'r', "iiay");
    sd_bus_message_append(pReply, "ii", image.width(), image.height());
    sd_bus_message_append_array(pReply, 'y', image.constBits(),
                                static_cast<std::size_t>(image.sizeInBytes()));
    sd_bus_message_close_container(pReply);
    return sd_bus_message_close_container(pReply);
  }

  static int ReadTip(sd_bus*, const char*, const char*, const char*, sd_bus_message* pReply,
                     void* pItem, sd_bus_error*) {
    const QByteArray sTip = Of(pItem).m_sTip.toUtf8();
    return sd_bus_message_append(pReply, "(sa(iiay)ss)", "", 0, sTip.constData(), "");
  }

  static constexpr sd_bus_vtable table[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("Activate", "ii", "", (Click<WM_LBUTTONDOWN, WM_LBUTTONUP>), 0),
      SD_BUS_METHOD("ContextMenu", "ii", "", (Click<WM_RBUTTONDOWN, WM_RBUTTONUP>), 0),
      SD_BUS_METHOD("SecondaryActivate", "ii", "", (Click<WM_MBUTTONDOWN, WM_MBUTTONUP>), 0),
      SD_BUS_METHOD("Scroll", "is", "", Ignore, 0),
      SD_BUS_PROPERTY("Category", "s", ReadText, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("Id", "s", ReadText, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("Title", "s", ReadText, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("Status", "s", ReadText, 0, 0),
      SD_BUS_PROPERTY("WindowId", "i", ReadNumber, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("ItemIsMenu", "b", ReadNumber, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("Menu", "o", ReadMenu, 0, SD_BUS_VTABLE_PROPERTY_CONST),
      SD_BUS_PROPERTY("IconName", "s", ReadText, 0, 0),
      SD_BUS_PROPERTY("IconPixmap", "a(iiay)", ReadImage, 0, 0),
      SD_BUS_PROPERTY("OverlayIconName", "s", ReadText, 0, 0),
      SD_BUS_PROPERTY("OverlayIconPixmap", "a(iiay)", ReadImage, 0, 0),
      SD_BUS_PROPERTY("AttentionIconName", "s", ReadText, 0, 0),
      SD_BUS_PROPERTY("AttentionIconPixmap", "a(iiay)", ReadImage, 0, 0),
      SD_BUS_PROPERTY("AttentionMovieName", "s", ReadText, 0, 0),
      SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", ReadTip, 0, 0),
      SD_BUS_SIGNAL("NewTitle", "", 0),
      SD_BUS_SIGNAL("NewIcon", "", 0),
      SD_BUS_SIGNAL("NewOverlayIcon", "", 0),
      SD_BUS_SIGNAL("NewAttentionIcon", "", 0),
      SD_BUS_SIGNAL("NewToolTip", "", 0),
      SD_BUS_SIGNAL("NewStatus", "s", 0),
      SD_BUS_VTABLE_END};
};

StatusItem::StatusItem(SessionBus& bus, QMenu* pMenu, Report report)
    : m_bus(bus), m_report(std::move(report)), m_menu(bus, pMenu) {
  const auto publish = [this] {
    m_bus.Export(sPath, sInterface, static_cast<const sd_bus_vtable*>(Interface::table), this);
  };
  QObject::connect(&bus, &SessionBus::Connected, this, publish);
}

void StatusItem::SetImage(const QImage& image) {
  if (image == std::exchange(m_image, image)) return;
  m_bus.Emit(sPath, sInterface, "NewIcon");
}

void StatusItem::SetTip(const QString& sTip) {
  if (sTip == std::exchange(m_sTip, sTip)) return;
  m_bus.Emit(sPath, sInterface, "NewToolTip");
}

}  // namespace quillorbit::linux_adapter
