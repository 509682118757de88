#include "platform/linux/desktop/x11.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include <QGuiApplication>

namespace quillorbit::linux_adapter::x11 {

xcb_connection_t* ToolkitConnection() {
  const auto* pX11 =
      qGuiApp == nullptr ? nullptr : qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return pX11 == nullptr ? nullptr : pX11->connection();
}

void Flush() {
  if (xcb_connection_t* const pConnection = ToolkitConnection()) xcb_flush(pConnection);
}

void ClearTitle(xcb_window_t window) {
  xcb_connection_t* const pConnection = ToolkitConnection();
  if (pConnection == nullptr) return;
  for (const xcb_atom_t title :
       {InternAtom(pConnection, "_NET_WM_NAME"), xcb_atom_t{XCB_ATOM_WM_NAME}})
    xcb_change_property(pConnection, XCB_PROP_MODE_REPLACE, window, title,
                        InternAtom(pConnection, "UTF8_STRING"), 8, 0, nullptr);
  xcb_flush(pConnection);
}

xcb_atom_t InternAtom(xcb_connection_t* pConnection, std::string_view sName) {
  const xcb_intern_atom_cookie_t request =
      xcb_intern_atom(pConnection, 0, static_cast<std::uint16_t>(sName.size()), sName.data());
  const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(pConnection, request, nullptr));
  return reply ? reply->atom : 0;
}

bool Succeeds(xcb_connection_t* pConnection, xcb_void_cookie_t request) {
  const Reply<xcb_generic_error_t> error(xcb_request_check(pConnection, request));
  return !error && xcb_connection_has_error(pConnection) == 0;
}

bool SendClientMessage(xcb_connection_t* pConnection, xcb_window_t destination, std::uint32_t mask,
                       xcb_window_t window, xcb_atom_t type, const MessageData& data) {
  xcb_client_message_event_t event{};
  static_assert(sizeof event == 32);  // what xcb_send_event reads
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = type;
  std::copy(data.begin(), data.end(), event.data.data32);
  return Succeeds(pConnection, xcb_send_event_checked(pConnection, 0, destination, mask,
                                                      reinterpret_cast<const char*>(&event)));
}

bool RequestActivation(xcb_connection_t* pConnection, xcb_window_t window) {
  const Reply<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(pConnection, xcb_query_tree(pConnection, window), nullptr));
  if (!tree) return false;
  constexpr std::uint32_t windowManager =
      XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  constexpr std::uint32_t source = 2;  // the user, through a pager
  return SendClientMessage(pConnection, tree->root, windowManager, window,
                           InternAtom(pConnection, "_NET_ACTIVE_WINDOW"),
                           {source, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
}

namespace {

/// A property of 32-bit values; empty when it is not there.
std::vector<std::uint32_t> Property(xcb_connection_t* pConnection, xcb_window_t window,
                                    xcb_atom_t property) {
  constexpr std::uint32_t most = 1024;
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      pConnection,
      xcb_get_property(pConnection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, most),
      nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* const pValues =
      static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
  return {pValues, pValues + xcb_get_property_value_length(reply.get()) / 4};
}

}  // namespace

std::optional<FrameExtents> RequestFrameExtents(xcb_connection_t* pConnection,
                                                xcb_window_t window) {
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(pConnection)).data->root;
  const xcb_atom_t request = InternAtom(pConnection, "_NET_REQUEST_FRAME_EXTENTS");
  const auto supported = Property(pConnection, root, InternAtom(pConnection, "_NET_SUPPORTED"));
  if (std::find(supported.begin(), supported.end(), request) == supported.end()) return {};

  constexpr std::uint32_t windowManager =
      XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  if (!SendClientMessage(pConnection, root, windowManager, window, request, {})) return {};
  const xcb_atom_t extents = InternAtom(pConnection, "_NET_FRAME_EXTENTS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
  do {
    const auto values = Property(pConnection, window, extents);
    if (values.size() == 4) return FrameExtents{values[0], values[1], values[2], values[3]};
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  } while (std::chrono::steady_clock::now() < end);
  return {};
}

}  // namespace quillorbit::linux_adapter::x11
