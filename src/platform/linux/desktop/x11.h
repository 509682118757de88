#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include <xcb/xcb.h>

namespace quillorbit::linux_adapter::x11 {

struct Free {
  void operator()(void* pReply) const { std::free(pReply); }
};
/// A server's reply; null when it was an error, or the connection is broken.
template <class T>
using Reply = std::unique_ptr<T, Free>;

/// The toolkit's own connection: requests made on it stay in order with the toolkit's. Null when
/// its display is not an X server.
[[nodiscard]] xcb_connection_t* ToolkitConnection();

/// Sends the toolkit's pending requests without waiting for its event loop.
void Flush();

/// Makes the title of one of the toolkit's windows empty. Without an X server behind the toolkit it
/// does nothing.
void ClearTitle(xcb_window_t window);

/// 0 on a broken connection.
[[nodiscard]] xcb_atom_t InternAtom(xcb_connection_t* pConnection, std::string_view sName);

/// Waits until a checked request has reached the server; false when the server refused it.
bool Succeeds(xcb_connection_t* pConnection, xcb_void_cookie_t request);

using MessageData = std::array<std::uint32_t, 5>;
/// Sends a ClientMessage about a window to a destination: to those who have selected the events of
/// the mask there, or for no mask to the program that made it. It has reached the server on return;
/// false when there is no such destination.
bool SendClientMessage(xcb_connection_t* pConnection, xcb_window_t destination, std::uint32_t mask,
                       xcb_window_t window, xcb_atom_t type, const MessageData& data);

/// Asks the window manager to bring a window to the front, in the user's name: window managers
/// refuse that to programs that take the focus on their own. False when there is no such window.
bool RequestActivation(xcb_connection_t* pConnection, xcb_window_t window);

/// In the server's pixels.
struct FrameExtents {
  std::uint32_t left, right, top, bottom;
};
/// Asks the window manager for the frame that a window of the root will get
/// (_NET_REQUEST_FRAME_EXTENTS of EWMH). Empty when there is no answer within a twentieth of a
/// second.
[[nodiscard]] std::optional<FrameExtents> RequestFrameExtents(xcb_connection_t* pConnection,
                                                              xcb_window_t window);

}  // namespace quillorbit::linux_adapter::x11
