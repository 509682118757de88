#include "e2e/screen.h"

#include <span>

#include "platform/linux/desktop/x11.h"

namespace quillorbit::test {
namespace {

using namespace linux_adapter::x11;

/// A connection of its own. A window that goes meanwhile has no answers.
struct Display {
  ~Display() { xcb_disconnect(x); }

  template <class Answer, class Cookie>
  Reply<Answer> Ask(Answer* (*reply)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                    Cookie cookie) const {
    return Reply<Answer>(reply(x, cookie, nullptr));
  }

  [[nodiscard]] xcb_atom_t Atom(std::string_view sName) const {
    const auto nLength = static_cast<std::uint16_t>(sName.size());
    return Ask(xcb_intern_atom_reply, xcb_intern_atom(x, 0, nLength, sName.data()))->atom;
  }
  [[nodiscard]] std::string Property(xcb_window_t window, xcb_atom_t name) const {
    const auto reply = Ask(xcb_get_property_reply, xcb_get_property(x, 0, window, name, 0, 0, 256));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
  }

  [[nodiscard]] std::string Type(xcb_window_t window) const {
    const std::string sAtoms = Property(window, Atom("_NET_WM_WINDOW_TYPE"));
    if (sAtoms.size() < sizeof(xcb_atom_t)) return {};
    const auto first = *reinterpret_cast<const xcb_atom_t*>(sAtoms.data());
    const auto name = Ask(xcb_get_atom_name_reply, xcb_get_atom_name(x, first));
    return {xcb_get_atom_name_name(name.get()), name->name_len};
  }

  /// Adds the window, if it is visible and has a title, and those inside it.
  void Add(xcb_window_t window, std::vector<ScreenWindow>& windows) const {
    const auto state = Ask(xcb_get_window_attributes_reply, xcb_get_window_attributes(x, window));
    if (!state || state->map_state != XCB_MAP_STATE_VIEWABLE) return;
    std::string sTitle = Property(window, Atom("_NET_WM_NAME"));
    if (sTitle.empty()) sTitle = Property(window, XCB_ATOM_WM_NAME);
    const auto size = Ask(xcb_get_geometry_reply, xcb_get_geometry(x, window));
    const auto place =
        Ask(xcb_translate_coordinates_reply, xcb_translate_coordinates(x, window, root, 0, 0));
    const auto tree = Ask(xcb_query_tree_reply, xcb_query_tree(x, window));
    if (!size || !place || !tree) return;
    const bool bParked = place->dst_x + size->width <= 0 || place->dst_y + size->height <= 0;
    if (!sTitle.empty() && !bParked)
      windows.push_back(
          {window, sTitle, Type(window), place->dst_x, place->dst_y, size->width, size->height});
    for (const xcb_window_t child :
         std::span(xcb_query_tree_children(tree.get()), tree->children_len))
      Add(child, windows);
  }

  xcb_connection_t* const x = xcb_connect(nullptr, nullptr);
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
};

}  // namespace

std::vector<ScreenWindow> WindowsOnScreen() {
  const Display display;
  std::vector<ScreenWindow> windows;
  display.Add(display.root, windows);
  return windows;
}

std::string Picture(const ScreenWindow& window, int nFirstRow, int nEndRow) {
  const Display display;
  const auto image = display.Ask(
      xcb_get_image_reply,
      xcb_get_image(display.x, XCB_IMAGE_FORMAT_Z_PIXMAP, window.nId, 0,
                    static_cast<std::int16_t>(nFirstRow), static_cast<std::uint16_t>(window.nWidth),
                    static_cast<std::uint16_t>(nEndRow - nFirstRow), ~0U));
  if (!image) return {};
  return {reinterpret_cast<const char*>(xcb_get_image_data(image.get())),
          static_cast<std::size_t>(xcb_get_image_data_length(image.get()))};
}

}  // namespace quillorbit::test
