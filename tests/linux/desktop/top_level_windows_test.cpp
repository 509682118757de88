#include "platform/linux/desktop/top_level_windows.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

#include "platform/linux/desktop/x11.h"
#include "support/virtual_display.h"

namespace quillorbit::linux_adapter {
namespace {

using namespace std::string_literals;
using namespace x11;
using platform::WindowHandle;
using Handles = std::vector<WindowHandle>;

/// Windows of another program, on a desktop of the test's own.
struct TopLevelWindowsTest : testing::Test {
  ~TopLevelWindowsTest() override { xcb_disconnect(x); }
  void Set(WindowHandle window, const char* sProperty, const char* sType, const void* pData,
           std::size_t nSize, std::uint8_t nFormat) {
    const auto request = xcb_change_property_checked(
        x, XCB_PROP_MODE_REPLACE, window, InternAtom(x, sProperty), InternAtom(x, sType), nFormat,
        static_cast<std::uint32_t>(nSize), pData);
    ASSERT_TRUE(Succeeds(x, request));
  }
  void SetText(WindowHandle window, const char* sProperty, const char* sType, std::string_view s) {
    Set(window, sProperty, sType, s.data(), s.size(), 8);
  }
  /// A hidden window. Without a class it is no program's, but may hold such windows.
  WindowHandle Make(WindowHandle parent, bool bClass = true) {
    const WindowHandle window = xcb_generate_id(x);
    xcb_create_window(x, 0, window, parent, 0, 0, 100, 50, 0, 0, 0, 0, nullptr);
    if (bClass) SetText(window, "WM_CLASS", "STRING", "name\0Class\0"s);
    return window;
  }
  /// What the enumeration reports of the windows made here.
  Handles Listed() {
    Handles listed;
    EXPECT_TRUE(
        windows.EnumWindows([&](auto h, auto l) { return listed.push_back(h), l == -7; }, -7));
    const xcb_setup_t& setup = *xcb_get_setup(x);
    std::erase_if(listed,
                  [&](auto h) { return (h & ~setup.resource_id_mask) != setup.resource_id_base; });
    return listed;
  }
  bool ListBecomes(const Handles& expected) {
    return test::Eventually([&] { return Listed() == expected; });
  }
  std::string Title(WindowHandle hwnd) {
    return {buffer, static_cast<std::size_t>(windows.GetWindowTextA(hwnd, buffer, sizeof buffer))};
  }
  std::string Class(WindowHandle hwnd) {
    return {buffer, static_cast<std::size_t>(windows.GetClassNameA(hwnd, buffer, sizeof buffer))};
  }

  test::TemporaryFolder folder;
  test::VirtualDisplay display{folder};
  xcb_connection_t* x = xcb_connect(nullptr, nullptr);
  const WindowHandle root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
  LinuxTopLevelWindows windows{[](auto...) {}};
  char buffer[256] = "";
};

TEST_F(TopLevelWindowsTest, ListsShowsAndRaisesTheWindowsOfAllPrograms) {
  const WindowHandle lower = Make(root), upper = Make(root);
  for (const WindowHandle window : {lower, upper}) {
    EXPECT_FALSE(windows.IsWindowVisible(window));
    EXPECT_TRUE(windows.ShowWindow(window, platform::SW_SHOW));
    EXPECT_TRUE(test::Eventually([&] { return windows.IsWindowVisible(window); }));
  }
  const WindowHandle hidden = Make(root), held = Make(Make(Make(root, false), false));
  Make(held);                                              // part of a window, and none itself
  EXPECT_TRUE(ListBecomes({held, hidden, upper, lower}));  // the topmost first
  EXPECT_TRUE(windows.SetForegroundWindow(lower));
  EXPECT_TRUE(ListBecomes({held, hidden, lower, upper}));
  const std::uint32_t iconic = 3;
  Set(hidden, "WM_STATE", "WM_STATE", &iconic, 1, 32);
  EXPECT_TRUE(windows.IsWindowVisible(hidden));  // minimised

  Handles seen;
  const auto frame = RequestFrameExtents(x, hidden);
  EXPECT_TRUE(frame && frame->top > frame->bottom);  // with a title bar
  const auto destroyHiddenAndStopAtLower = [&](WindowHandle hwnd, std::int32_t) {
    Succeeds(x, xcb_destroy_window_checked(x, hidden));
    seen.push_back(hwnd);
    return hwnd != lower;
  };
  EXPECT_FALSE(windows.EnumWindows(destroyHiddenAndStopAtLower, 0));
  EXPECT_TRUE(seen.back() == lower && std::ranges::count(seen, hidden) == 0);
  EXPECT_FALSE(windows.IsWindowVisible(hidden) || windows.ShowWindow(hidden, platform::SW_SHOW));
}

TEST_F(TopLevelWindowsTest, ReadsTitleClassAndOwner) {
  const WindowHandle owner = Make(root), window = Make(root);
  const std::vector<std::array<std::string, 4>> titles = {
      {"WM_NAME", "STRING", "Caf\xE9", "Café"},
      {"WM_NAME", "UTF8_STRING", "a\xFF z\xE2\x82", "a\uFFFD z\uFFFD\uFFFD"},
      {"_NET_WM_NAME", "UTF8_STRING", "a€b", "a€b"}};
  for (const auto& [sProperty, sType, sText, sTitle] : titles) {
    SetText(window, sProperty.c_str(), sType.c_str(), sText);
    EXPECT_EQ(Title(window), sTitle);
    EXPECT_EQ(windows.GetWindowTextLengthA(window), static_cast<int>(sTitle.size()));
  }
  const int lengths[] = {0, 0, 1, 1, 1, 4, 5};  // never cut inside a character
  for (int nMaxCount = 0; nMaxCount <= 6; ++nMaxCount)
    EXPECT_EQ(windows.GetWindowTextA(window, buffer, nMaxCount), lengths[nMaxCount]);
  EXPECT_EQ(Class(window), "Class");  // the second string of WM_CLASS

  Set(window, "WM_TRANSIENT_FOR", "WINDOW", &owner, 1, 32);
  EXPECT_EQ(windows.GetWindow(window, 4), owner);
}

}  // namespace
}  // namespace quillorbit::linux_adapter
