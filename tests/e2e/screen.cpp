#include "e2e/screen.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>

#include "platform/linux/desktop/x11.h"

namespace quillorbit::test {
namespace {

using linux_adapter::x11::Reply;

template <class Answer>
Reply<Answer> Own(Answer* pReply) {
  return Reply<Answer>(pReply);
}

/// A connection of its own. A window that goes meanwhile has no replies.
class Display {
 public:
  [[nodiscard]] xcb_connection_t* Get() const { return m_connection.get(); }

  /// All questions about the windows of a depth are on their way before the first answer is read.
  void AddVisible(xcb_window_t parent, std::vector<ScreenWindow>& windows) const {
    const auto tree = Own(xcb_query_tree_reply(Get(), xcb_query_tree(Get(), parent), nullptr));
    if (!tree) return;
    const std::span children(xcb_query_tree_children(tree.get()), tree->children_len);
    std::vector<xcb_get_window_attributes_cookie_t> questions;
    for (const xcb_window_t child : children)
      questions.push_back(xcb_get_window_attributes(Get(), child));
    std::vector<xcb_window_t> visible;
    for (std::size_t i = 0; i < children.size(); ++i) {
      const auto attributes = Own(xcb_get_window_attributes_reply(Get(), questions[i], nullptr));
      if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE)
        visible.push_back(children[i]);
    }
    for (const xcb_window_t child : visible) {
      AddTitled(child, windows);
      AddVisible(child, windows);
    }
  }

  [[nodiscard]] xcb_window_t Root() const {
    return xcb_setup_roots_iterator(xcb_get_setup(Get())).data->root;
  }

 private:
  void AddTitled(xcb_window_t window, std::vector<ScreenWindow>& windows) const {
    std::string sTitle = Property(window, m_netWmName);
    if (sTitle.empty()) sTitle = Property(window, XCB_ATOM_WM_NAME);
    if (sTitle.empty()) return;
    const auto size = Own(xcb_get_geometry_reply(Get(), xcb_get_geometry(Get(), window), nullptr));
    const auto place = Own(xcb_translate_coordinates_reply(
        Get(), xcb_translate_coordinates(Get(), window, Root(), 0, 0), nullptr));
    if (!size || !place) return;
    if (place->dst_x + size->width <= 0 || place->dst_y + size->height <= 0) return;  // parked
    windows.push_back(
        {window, sTitle, Type(window), place->dst_x, place->dst_y, size->width, size->height});
  }

  [[nodiscard]] xcb_atom_t Atom(std::string_view sName) const {
    const auto reply = Own(xcb_intern_atom_reply(
        Get(), xcb_intern_atom(Get(), 0, static_cast<std::uint16_t>(sName.size()), sName.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  [[nodiscard]] std::string Property(xcb_window_t window, xcb_atom_t name) const {
    const auto reply = Own(xcb_get_property_reply(
        Get(), xcb_get_property(Get(), 0, window, name, XCB_ATOM_ANY, 0, 256), nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
  }

  [[nodiscard]] std::string Type(xcb_window_t window) const {
    const std::string sAtoms = Property(window, m_windowType);
    xcb_atom_t first = XCB_ATOM_NONE;
    if (sAtoms.size() < sizeof first) return {};
    std::copy_n(sAtoms.data(), sizeof first, reinterpret_cast<char*>(&first));
    const auto name = Own(xcb_get_atom_name_reply(Get(), xcb_get_atom_name(Get(), first), nullptr));
    if (!name) return {};
    return {xcb_get_atom_name_name(name.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get()))};
  }

  std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> m_connection{
      xcb_connect(nullptr, nullptr), &xcb_disconnect};
  xcb_atom_t m_netWmName = Atom("_NET_WM_NAME");
  xcb_atom_t m_windowType = Atom("_NET_WM_WINDOW_TYPE");
};

}  // namespace

std::vector<ScreenWindow> WindowsOnScreen() {
  const Display display;
  std::vector<ScreenWindow> windows;
  if (xcb_connection_has_error(display.Get()) == 0) display.AddVisible(display.Root(), windows);
  return windows;
}

std::string Picture(const ScreenWindow& window, int nFirstRow, int nEndRow) {
  const Display display;
  const auto nWidth = static_cast<std::uint16_t>(window.nWidth);
  const auto nHeight = static_cast<std::uint16_t>(nEndRow - nFirstRow);
  const auto nTop = static_cast<std::int16_t>(nFirstRow);
  const auto image =
      Own(xcb_get_image_reply(display.Get(),
                              xcb_get_image(display.Get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window.nId, 0,
                                            nTop, nWidth, nHeight, ~0U),
                              nullptr));
  if (!image) return {};
  return {reinterpret_cast<const char*>(xcb_get_image_data(image.get())),
          static_cast<std::size_t>(xcb_get_image_data_length(image.get()))};
}

}  // namespace quillorbit::test
