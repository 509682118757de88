#include "platform/linux/x11.h"

#include <algorithm>

#include <QGuiApplication>

namespace quillorbit::linux_adapter::x11 {

xcb_connection_t* ToolkitConnection() {
  const auto* pX11 =
      qGuiApp == nullptr ? nullptr : qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return pX11 == nullptr ? nullptr : pX11->connection();
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

}  // namespace quillorbit::linux_adapter::x11
