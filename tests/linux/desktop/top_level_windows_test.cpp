#include "platform/linux/desktop/top_level_windows.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include <QGuiApplication>
#include <QWindow>

#include "linux/support.h"
#include "platform/linux/desktop/window_commands.h"
#include "platform/linux/desktop/x11.h"
#include "support/virtual_display.h"

namespace quillorbit::linux_tests {
namespace {

using namespace linux_adapter;
using platform::WindowHandle;
using test::Eventually;
using Handles = std::vector<WindowHandle>;

/// Windows of a program, made on a connection of their own, on a desktop of their own.
struct TopLevelWindowsTest : testing::Test {
  TopLevelWindowsTest() {
    x = xcb_connect(nullptr, nullptr);
    root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
  }
  ~TopLevelWindowsTest() override { xcb_disconnect(x); }
  [[nodiscard]] xcb_atom_t Atom(const char* sName) const { return x11::InternAtom(x, sName); }
  void Sync() const { x11::Succeeds(x, xcb_no_operation_checked(x)); }
  void Set(WindowHandle window, const char* sProperty, const char* sType, std::string_view sText,
           std::uint8_t nFormat = 8) const {
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window, Atom(sProperty), Atom(sType), nFormat,
                        static_cast<std::uint32_t>(sText.size() * 8 / nFormat), sText.data());
    Sync();
  }
  void Set(WindowHandle window, const char* sProperty, const char* sType,
           std::uint32_t word) const {
    Set(window, sProperty, sType, {reinterpret_cast<const char*>(&word), sizeof word}, 32);
  }
  /// Makes a window without properties.
  WindowHandle Bare(WindowHandle parent) {
    const WindowHandle window = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window, parent, 0, 0, 100, 50, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
  }
  /// Makes a window as programs do; it is not shown.
  WindowHandle Make(std::string_view sTitle, WindowHandle parent = 0) {
    const WindowHandle window = Bare(parent == 0 ? root : parent);
    Set(window, "WM_CLASS", "STRING", {"test\0Test\0", 10});
    Set(window, "_NET_WM_NAME", "UTF8_STRING", sTitle);
    return window;
  }
  [[nodiscard]] bool Becomes(WindowHandle window, const char* sProperty, std::uint32_t word) const {
    return Eventually([&] {
      const x11::Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
          x, xcb_get_property(x, 0, window, Atom(sProperty), XCB_GET_PROPERTY_TYPE_ANY, 0, 1), {}));
      const bool bThere = reply && reply->length == 1;
      return word == (bThere ? *static_cast<std::uint32_t*>(xcb_get_property_value(&*reply)) : 0);
    });
  }
  [[nodiscard]] bool IsActive(WindowHandle w) const {
    return Becomes(root, "_NET_ACTIVE_WINDOW", w);
  }
  [[nodiscard]] bool IsMapped(WindowHandle window) const {
    const x11::Reply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(x, xcb_get_window_attributes(x, window), nullptr));
    return reply && reply->map_state != XCB_MAP_STATE_UNMAPPED;
  }
  /// The first words of the messages about a window that have come by now, each of that type.
  [[nodiscard]] std::vector<std::uint32_t> Messages(const char* sType, WindowHandle window) const {
    Sync();
    std::vector<std::uint32_t> words;
    while (const auto event = x11::Reply<xcb_generic_event_t>(xcb_poll_for_event(x))) {
      const auto* pMessage = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
      if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE || pMessage->window != window)
        continue;
      EXPECT_EQ(pMessage->type, Atom(sType));
      words.push_back(pMessage->data.data32[0]);
    }
    return words;
  }
  void Show(WindowHandle window) const {
    xcb_map_window(x, window);
    ASSERT_TRUE(IsActive(window));
  }

  /// All handles that the walk tells of.
  Handles Told() {
    Handles told;
    EXPECT_TRUE(windows.EnumWindows(
        [&](WindowHandle hwnd, std::int32_t lParam) {
          told.push_back(hwnd);
          return lParam == -7;
        },
        -7));
    return told;
  }
  /// Those of them that were made here.
  Handles Listed() {
    Handles told = Told();
    const xcb_setup_t* pSetup = xcb_get_setup(x);
    std::erase_if(told, [&](WindowHandle hwnd) {
      return (hwnd & ~pSetup->resource_id_mask) != pSetup->resource_id_base;
    });
    return told;
  }
  std::string Text(WindowHandle window, int nMaxCount = sizeof buffer) {
    const int nLength = windows.GetWindowTextA(window, buffer, nMaxCount);
    EXPECT_EQ(nLength, static_cast<int>(std::string_view(buffer).size()));
    return buffer;
  }
  std::string Class(WindowHandle window, int nMaxCount = sizeof buffer) {
    const int nLength = windows.GetClassNameA(window, buffer, nMaxCount);
    EXPECT_EQ(nLength, static_cast<int>(std::string_view(buffer).size()));
    return buffer;
  }
  void ExpectNothingOf(WindowHandle hwnd) {
    EXPECT_FALSE(windows.IsWindowVisible(hwnd));
    EXPECT_EQ(windows.GetWindowTextLengthA(hwnd), 0);
    EXPECT_EQ(Text(hwnd) + Class(hwnd), "");
    EXPECT_EQ(windows.GetWindow(hwnd, platform::GW_OWNER), 0U);
    EXPECT_FALSE(windows.ShowWindow(hwnd, platform::SW_SHOW));
    EXPECT_FALSE(windows.SetForegroundWindow(hwnd));
  }

  TemporaryRuntimeFolder folder;
  test::VirtualDisplay display{folder};
  xcb_connection_t* x = nullptr;
  WindowHandle root = 0;
  std::vector<std::array<std::uint32_t, 3>> icons;
  LinuxTopLevelWindows windows{[this](auto... icon) { icons.push_back({icon...}); }};
  char buffer[70000] = "untouched";
};

TEST_F(TopLevelWindowsTest, ListsEveryProgramsWindowsOnceTheTopmostFirst) {
  const WindowHandle lower = Make("lower");
  const WindowHandle upper = Make("upper");
  Show(lower);
  Show(upper);
  const WindowHandle hidden = Make("hidden ☂");  // created on top of all
  const WindowHandle held = Make("held", Bare(Bare(root)));
  Make("inside", held);  // part of a window, and none itself
  EXPECT_EQ(Listed(), (Handles{held, hidden, upper, lower}));
  EXPECT_EQ(Text(hidden), "hidden ☂");
  EXPECT_EQ(Class(hidden), "Test");

  EXPECT_TRUE(windows.SetForegroundWindow(lower));
  EXPECT_TRUE(Eventually([&] { return Listed() == Handles{held, hidden, lower, upper}; }));
  const x11::Reply<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(x, xcb_query_tree(x, lower), nullptr));
  const Handles told = Told();
  ASSERT_NE(tree->parent, root);
  EXPECT_EQ(std::count(told.begin(), told.end(), tree->parent), 0);
}

TEST_F(TopLevelWindowsTest, TheWalkEndsAtFalseAndPassesOverWindowsThatGo) {
  const Handles made{Make("0"), Make("1"), Make("2"), Make("3")};
  Handles told;
  EXPECT_FALSE(windows.EnumWindows(
      [&](WindowHandle hwnd, std::int32_t) {
        told.push_back(hwnd);
        if (hwnd == made[3]) {
          xcb_destroy_window(x, made[3]);
          xcb_destroy_window(x, made[2]);
          Sync();
          ExpectNothingOf(hwnd);
        }
        return hwnd != made[1];
      },
      0));
  EXPECT_EQ(told, (Handles{made[3], made[1]}));
}

TEST_F(TopLevelWindowsTest, TitlesAreValidUtf8AndCutBetweenCharacters) {
  const WindowHandle window = Make("");
  const auto title = [&](const char* sType, auto text, const char* sProperty = "WM_NAME") {
    xcb_delete_property(x, window, Atom("_NET_WM_NAME"));
    Set(window, sProperty, sType, text);
    const std::string sText = Text(window);
    EXPECT_EQ(windows.GetWindowTextLengthA(window), static_cast<int>(sText.size()));
    return sText;
  };
  EXPECT_EQ(title("STRING", "Caf\xE9"), "Café");
  EXPECT_EQ(title("UTF8_STRING", "Käse"), "Käse");
  EXPECT_EQ(title("UTF8_STRING", "the newer", "_NET_WM_NAME"), "the newer");
  EXPECT_EQ(title("STRING", "of no such type", "_NET_WM_NAME"), "Käse");
  EXPECT_EQ(title("UTF8_STRING", "a\xFF z\xE2\x82"), "a\uFFFD z\uFFFD\uFFFD");
  EXPECT_EQ(title("UTF8_STRING", std::string_view("end\0more", 8)), "end");
  EXPECT_EQ(title("STRING", 0x41424344U), "");  // 32-bit numbers are no text
  std::string sLong(100000, 'x');
  EXPECT_EQ(title("UTF8_STRING", sLong), sLong.substr(0, 65536));
  sLong.replace(65535, 3, "€");
  EXPECT_EQ(title("UTF8_STRING", sLong), sLong.substr(0, 65535));

  title("UTF8_STRING", "a€b");
  EXPECT_EQ(Text(window, 6), "a€b");
  EXPECT_EQ(Text(window, 5), "a€");
  EXPECT_EQ(Text(window, 4), "a");
  EXPECT_EQ(Text(window, 1), "");
  buffer[0] = '?';
  for (const int nMaxCount : {0, -1})
    EXPECT_EQ(windows.GetWindowTextA(window, buffer, nMaxCount), 0);
  EXPECT_EQ(buffer[0], '?');
}

TEST_F(TopLevelWindowsTest, TheClassIsTheSecondString) {
  const WindowHandle window = Make("");
  const auto className = [&](const std::string& sNames, int nMaxCount = 256) {
    Set(window, "WM_CLASS", "STRING", sNames);
    return Class(window, nMaxCount);
  };
  EXPECT_EQ(className({"one\0Two\0Three\0", 14}), "Two");
  EXPECT_EQ(className({"one\0Two", 7}, 3), "Tw");
  EXPECT_EQ(className({"\0\xDCn\0", 4}), "Ün");
  EXPECT_EQ(className({"one\0", 4}), "");
  EXPECT_EQ(className("one"), "");
  const std::string sLong = std::string("one\0", 4) + std::string(9000, 'c');
  EXPECT_EQ(className(sLong), std::string(255, 'c'));
  EXPECT_EQ(className(sLong, 20000), std::string(9000, 'c'));
}

TEST_F(TopLevelWindowsTest, AnotherProgramsWindowIsShownRestoredAndActivated) {
  const WindowHandle window = Make("window");
  const WindowHandle other = Make("other");
  EXPECT_FALSE(windows.IsWindowVisible(window));
  EXPECT_TRUE(windows.ShowWindow(window, platform::SW_SHOW));
  EXPECT_TRUE(IsActive(window));
  EXPECT_TRUE(windows.IsWindowVisible(window));
  Show(other);
  const std::uint32_t listen = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  xcb_change_window_attributes(x, root, XCB_CW_EVENT_MASK, &listen);
  Sync();
  EXPECT_TRUE(windows.SetForegroundWindow(window));
  EXPECT_EQ(Messages("_NET_ACTIVE_WINDOW", window), std::vector{2U});  // in the user's name
  EXPECT_TRUE(IsActive(window));

  x11::SendClientMessage(x, root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, window,
                         Atom("WM_CHANGE_STATE"), {3});
  ASSERT_TRUE(Becomes(window, "WM_STATE", 3));
  EXPECT_FALSE(IsMapped(window));
  EXPECT_TRUE(windows.IsWindowVisible(window));  // minimised
  EXPECT_TRUE(windows.ShowWindow(window, platform::SW_RESTORE));
  ASSERT_TRUE(Becomes(window, "WM_STATE", 1));
  EXPECT_TRUE(IsMapped(window));

  xcb_unmap_window(x, window);
  ASSERT_TRUE(Becomes(window, "WM_STATE", 0));
  EXPECT_FALSE(windows.IsWindowVisible(window));
  EXPECT_EQ(Listed(), (Handles{window, other}));
}

TEST_F(TopLevelWindowsTest, TheOwnerIsAnotherWindowThatExists) {
  const WindowHandle owner = Make("owner");
  const WindowHandle window = Make("window");
  const auto ownerOf = [&](std::uint32_t transientFor, std::uint32_t lCommand = 4) {
    Set(window, "WM_TRANSIENT_FOR", "WINDOW", transientFor);
    return windows.GetWindow(window, lCommand);
  };
  EXPECT_EQ(ownerOf(owner), owner);
  EXPECT_EQ(ownerOf(owner, 3), 0U);
  for (const std::uint32_t none : {0U, root, window}) EXPECT_EQ(ownerOf(none), 0U);
  xcb_destroy_window(x, owner);
  EXPECT_EQ(ownerOf(owner), 0U);
}

TEST_F(TopLevelWindowsTest, FrameIsKnownBeforeAWindowIsShown) {
  const WindowHandle window = Make("window");
  const auto frame = x11::RequestFrameExtents(x, window);
  ASSERT_TRUE(frame);
  EXPECT_GT(frame->top, frame->bottom);  // there is a title bar
  EXPECT_FALSE(IsMapped(window));
  xcb_delete_property(x, window, Atom("_NET_FRAME_EXTENTS"));
  Show(window);
  EXPECT_TRUE(Becomes(window, "_NET_FRAME_EXTENTS", frame->left));

  EXPECT_FALSE(x11::RequestFrameExtents(x, root));  // nobody answers
  xcb_delete_property(x, root, Atom("_NET_SUPPORTED"));
  EXPECT_FALSE(x11::RequestFrameExtents(x, Make("other")));
}

TEST_F(TopLevelWindowsTest, AMarkedWindowIsCommandedAndNotTouched) {
  const WindowHandle window = Make("hidden");
  Set(window, "_QUILLORBIT_COMMANDS", "CARDINAL", 1U);
  EXPECT_TRUE(windows.ShowWindow(window, platform::SW_RESTORE));
  EXPECT_TRUE(windows.ShowWindow(window, platform::SW_SHOW));
  EXPECT_TRUE(windows.SetForegroundWindow(window));
  EXPECT_FALSE(windows.ShowWindow(window, 0));
  EXPECT_EQ(Messages("_QUILLORBIT_COMMANDS", window), (std::vector<std::uint32_t>{2, 1, 3}));
  EXPECT_FALSE(IsMapped(window));
}

TEST_F(TopLevelWindowsTest, WithoutAServerEverythingFails) {
  EXPECT_FALSE(Told().empty());
  display.KillServer();
  for (const bool bNamed : {true, false}) {
    if (!bNamed) unsetenv("DISPLAY");
    EXPECT_FALSE(windows.EnumWindows([](auto...) { return true; }, 0));
    ExpectNothingOf(root);
  }
  display.StartServer();
  EXPECT_TRUE(windows.EnumWindows([](auto...) { return true; }, 0));
}

TEST_F(TopLevelWindowsTest, ItsOwnProgramTakesMessagesAndCommands) {
  windows.SendMessageA(5, platform::WM_SETICON, platform::ICON_BIG, 6);
  windows.SendMessageA(5, platform::WM_SETICON, platform::ICON_SMALL, 0);
  windows.SendMessageA(5, platform::WM_SETICON, 2, 6);
  windows.SendMessageA(5, 0x10, 0, 6);
  EXPECT_EQ(icons, (std::vector{std::array{5U, 1U, 6U}, std::array{5U, 0U, 0U}}));

  setenv("QT_QPA_PLATFORM", "xcb", 1);
  int argc = 1;
  char sProgram[] = "top_level_windows_test";
  char* argv[] = {sProgram, nullptr};
  const QGuiApplication application(argc, argv);
  std::vector<std::pair<WindowHandle, WindowCommand>> taken;
  WindowCommands commands([&](auto... command) { taken.emplace_back(command...); });
  QWindow window;
  const auto hwnd = static_cast<WindowHandle>(window.winId());
  MarkWindow(hwnd, "QuillorbitTest");
  window.show();
  EXPECT_TRUE(WaitUntil([&] { return window.isActive(); }));
  Show(Make("other"));
  ActivateWindow(hwnd);
  EXPECT_TRUE(IsActive(hwnd));
  window.hide();
  EXPECT_EQ(Class(hwnd), "QuillorbitTest");

  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = hwnd;
  event.data.data32[0] = 1;
  const auto filter = [&](xcb_atom_t type) {
    event.type = type;
    QAbstractNativeEventFilter& toolkitsSide = commands;
    return toolkitsSide.nativeEventFilter("xcb_generic_event_t", &event, nullptr);
  };
  EXPECT_FALSE(filter(Atom("WM_PROTOCOLS")));
  EXPECT_TRUE(filter(Atom("_QUILLORBIT_COMMANDS")));
  EXPECT_TRUE(taken.empty());  // until the event loop has its turn
  x11::SendClientMessage(x, hwnd, 0, hwnd, event.type, {99});
  EXPECT_TRUE(windows.ShowWindow(hwnd, platform::SW_RESTORE));
  EXPECT_TRUE(windows.SetForegroundWindow(hwnd));
  EXPECT_TRUE(WaitUntil([&] { return taken.size() >= 3; }));
  EXPECT_EQ(taken, (std::vector{std::pair{hwnd, WindowCommand::Show},
                                std::pair{hwnd, WindowCommand::Restore},
                                std::pair{hwnd, WindowCommand::Foreground}}));
}

}  // namespace
}  // namespace quillorbit::linux_tests
