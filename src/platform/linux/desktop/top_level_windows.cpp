#include "platform/linux/desktop/top_level_windows.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QString>

#include "platform/linux/desktop/window_commands.h"
#include "platform/linux/desktop/x11.h"

namespace quillorbit::linux_adapter {
namespace {

using platform::WindowHandle;

/// The longest text that is read, in bytes.
constexpr std::uint32_t nMaxText = 64 * 1024;
/// A window manager puts a program's window into one or two of its own.
constexpr int nMaxDepth = 8;

// The values of WM_STATE
constexpr std::uint32_t normalState = 1;
constexpr std::uint32_t iconicState = 3;

/// The bytes of valid UTF-8 that fit, without a part of a character.
std::string_view Fitting(std::string_view sText, std::size_t nBytes) {
  if (sText.size() <= nBytes) return sText;
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  while (nBytes > 0 && isContinuation(sText[nBytes])) --nBytes;
  return sText.substr(0, nBytes);
}

int Copy(std::string_view sText, char* sBuffer, int nMaxCount) {
  if (sBuffer == nullptr || nMaxCount <= 0) return 0;
  const std::string_view sFitting = Fitting(sText, static_cast<std::size_t>(nMaxCount) - 1);
  std::memcpy(sBuffer, sFitting.data(), sFitting.size());
  sBuffer[sFitting.size()] = '\0';
  return static_cast<int>(sFitting.size());
}

using PropertyReply = x11::Reply<xcb_get_property_reply_t>;

bool IsThere(const PropertyReply& property) { return property && property->type != XCB_ATOM_NONE; }

std::string_view Bytes(const PropertyReply& property) {
  return {static_cast<const char*>(xcb_get_property_value(property.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(property.get()))};
}

/// The first word of a property of 32-bit words; 0 when there is none.
std::uint32_t Word(const PropertyReply& property) {
  std::uint32_t word = 0;
  if (IsThere(property) && property->format == 32 && Bytes(property).size() >= sizeof word)
    std::memcpy(&word, Bytes(property).data(), sizeof word);
  return word;
}

}  // namespace

class LinuxTopLevelWindows::Connection {
 public:
  [[nodiscard]] static std::unique_ptr<Connection> Open();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { xcb_disconnect(m_pConnection); }

  /// Discards unsolicited events, and detects a broken connection.
  [[nodiscard]] bool IsAlive();

  /// The root windows' children, the topmost first; none when the server is gone.
  [[nodiscard]] std::optional<std::vector<WindowHandle>> Windows();
  [[nodiscard]] bool Exists(xcb_window_t window) { return Tree(QueryTree(window)) != nullptr; }
  [[nodiscard]] bool IsVisible(xcb_window_t window);
  [[nodiscard]] std::string Title(xcb_window_t window);
  [[nodiscard]] std::string ClassName(xcb_window_t window);
  [[nodiscard]] xcb_window_t Owner(xcb_window_t window);
  /// False when there is no such window.
  bool Command(xcb_window_t window, WindowCommand eCommand);

 private:
  /// A window that the walk meets, and the questions about it.
  struct Visited {
    xcb_window_t window = XCB_WINDOW_NONE;
    bool bIsPrograms = false;  ///< and not a window manager's frame around one
    xcb_get_property_cookie_t wmClass{};
    xcb_get_property_cookie_t wmState{};
    xcb_query_tree_cookie_t tree{};
  };

  explicit Connection(xcb_connection_t* pConnection) : m_pConnection(pConnection) {}

  [[nodiscard]] xcb_query_tree_cookie_t QueryTree(xcb_window_t window) {
    return xcb_query_tree(m_pConnection, window);
  }
  [[nodiscard]] x11::Reply<xcb_query_tree_reply_t> Tree(xcb_query_tree_cookie_t cookie) {
    return x11::Reply<xcb_query_tree_reply_t>(xcb_query_tree_reply(m_pConnection, cookie, nullptr));
  }
  [[nodiscard]] xcb_get_property_cookie_t Ask(xcb_window_t window, xcb_atom_t property,
                                              std::uint32_t nBytes) {
    return xcb_get_property(m_pConnection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                            nBytes / 4);
  }
  [[nodiscard]] PropertyReply Property(xcb_get_property_cookie_t cookie) {
    return PropertyReply(xcb_get_property_reply(m_pConnection, cookie, nullptr));
  }
  [[nodiscard]] std::string ToUtf8(std::string_view sText, xcb_atom_t encoding) const;

  xcb_connection_t* m_pConnection;
  xcb_window_t m_root = XCB_WINDOW_NONE;
  xcb_atom_t m_wmState = XCB_ATOM_NONE;
  xcb_atom_t m_netWmName = XCB_ATOM_NONE;
  xcb_atom_t m_utf8String = XCB_ATOM_NONE;
  xcb_atom_t m_commands = XCB_ATOM_NONE;
};

std::unique_ptr<LinuxTopLevelWindows::Connection> LinuxTopLevelWindows::Connection::Open() {
  int nScreen = 0;
  std::unique_ptr<Connection> opened(new Connection(xcb_connect(nullptr, &nScreen)));
  xcb_connection_t* pConnection = opened->m_pConnection;
  if (xcb_connection_has_error(pConnection) != 0) return nullptr;
  xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(pConnection));
  for (; nScreen > 0 && screen.rem > 1; --nScreen) xcb_screen_next(&screen);
  opened->m_root = screen.data->root;
  opened->m_wmState = x11::InternAtom(pConnection, "WM_STATE");
  opened->m_netWmName = x11::InternAtom(pConnection, "_NET_WM_NAME");
  opened->m_utf8String = x11::InternAtom(pConnection, "UTF8_STRING");
  opened->m_commands = x11::InternAtom(pConnection, sWindowCommandsAtom);
  return opened->IsAlive() ? std::move(opened) : nullptr;
}

bool LinuxTopLevelWindows::Connection::IsAlive() {
  while (x11::Reply<xcb_generic_event_t>(xcb_poll_for_event(m_pConnection))) continue;
  return xcb_connection_has_error(m_pConnection) == 0;
}

std::optional<std::vector<WindowHandle>> LinuxTopLevelWindows::Connection::Windows() {
  // All windows of a depth are asked about before the first answer is waited for; then each that
  // is no program's gives its place to those inside it.
  std::vector<Visited> found;
  const auto addChildren = [&found](const xcb_query_tree_reply_t& tree) {
    const xcb_window_t* pBottom = xcb_query_tree_children(&tree);
    for (int i = xcb_query_tree_children_length(&tree); i > 0; --i)
      found.push_back({.window = pBottom[i - 1]});
  };
  if (const auto tree = Tree(QueryTree(m_root))) addChildren(*tree);

  for (int nDepth = 0; nDepth < nMaxDepth; ++nDepth) {
    for (Visited& visited : found) {
      if (visited.bIsPrograms) continue;
      visited.wmClass = Ask(visited.window, XCB_ATOM_WM_CLASS, 0);
      visited.wmState = Ask(visited.window, m_wmState, 0);
      visited.tree = QueryTree(visited.window);
    }
    for (Visited& visited : std::exchange(found, {})) {
      if (visited.bIsPrograms) {
        found.push_back(visited);
        continue;
      }
      const PropertyReply wmClass = Property(visited.wmClass);
      const PropertyReply wmState = Property(visited.wmState);
      const auto tree = Tree(visited.tree);
      if (!tree) continue;  // it is gone
      visited.bIsPrograms = IsThere(wmClass) || IsThere(wmState);
      if (visited.bIsPrograms)
        found.push_back(visited);
      else
        addChildren(*tree);
    }
  }
  if (!IsAlive()) return std::nullopt;
  std::vector<WindowHandle> windows;
  for (const Visited& visited : found)
    if (visited.bIsPrograms) windows.push_back(visited.window);
  return windows;
}

bool LinuxTopLevelWindows::Connection::IsVisible(xcb_window_t window) {
  const xcb_get_property_cookie_t stateCookie = Ask(window, m_wmState, 4);
  const x11::Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
      m_pConnection, xcb_get_window_attributes(m_pConnection, window), nullptr));
  const std::uint32_t state = Word(Property(stateCookie));
  return attributes && (attributes->map_state == XCB_MAP_STATE_VIEWABLE || state == normalState ||
                        state == iconicState);
}

/// A text up to its NUL, from its property's encoding: UTF-8, or else Latin-1.
std::string LinuxTopLevelWindows::Connection::ToUtf8(std::string_view sText,
                                                     xcb_atom_t encoding) const {
  sText = sText.substr(0, sText.find('\0'));
  const auto nSize = static_cast<qsizetype>(sText.size());
  const QString text = encoding == m_utf8String ? QString::fromUtf8(sText.data(), nSize)
                                                : QString::fromLatin1(sText.data(), nSize);
  return std::string(Fitting(text.toStdString(), nMaxText));
}

std::string LinuxTopLevelWindows::Connection::Title(xcb_window_t window) {
  const xcb_get_property_cookie_t netNameCookie = Ask(window, m_netWmName, nMaxText);
  const xcb_get_property_cookie_t nameCookie = Ask(window, XCB_ATOM_WM_NAME, nMaxText);
  const PropertyReply netName = Property(netNameCookie);
  const PropertyReply name = Property(nameCookie);
  if (IsThere(netName) && netName->type == m_utf8String && netName->format == 8)
    return ToUtf8(Bytes(netName), m_utf8String);
  return IsThere(name) && name->format == 8 ? ToUtf8(Bytes(name), name->type) : std::string();
}

std::string LinuxTopLevelWindows::Connection::ClassName(xcb_window_t window) {
  const PropertyReply names = Property(Ask(window, XCB_ATOM_WM_CLASS, nMaxText));
  if (!IsThere(names) || names->format != 8) return {};
  const std::string_view sNames = Bytes(names);  // the instance's name, NUL, the class, NUL
  const std::size_t nEnd = sNames.find('\0');
  return nEnd == std::string_view::npos ? std::string()
                                        : ToUtf8(sNames.substr(nEnd + 1), names->type);
}

xcb_window_t LinuxTopLevelWindows::Connection::Owner(xcb_window_t window) {
  const xcb_window_t owner = Word(Property(Ask(window, XCB_ATOM_WM_TRANSIENT_FOR, 4)));
  if (owner == XCB_WINDOW_NONE || owner == window) return XCB_WINDOW_NONE;
  // A root window as the owner means the program's whole group; it has no parent.
  const auto tree = Tree(QueryTree(owner));
  return tree && tree->parent != XCB_WINDOW_NONE ? owner : 0;
}

bool LinuxTopLevelWindows::Connection::Command(xcb_window_t window, WindowCommand eCommand) {
  const PropertyReply mark = Property(Ask(window, m_commands, 0));
  if (!mark) return false;
  if (IsThere(mark)) {
    return x11::SendClientMessage(m_pConnection, window, XCB_EVENT_MASK_NO_EVENT, window,
                                  m_commands, {static_cast<std::uint32_t>(eCommand), 0, 0, 0, 0});
  }
  if (eCommand == WindowCommand::Foreground) return x11::RequestActivation(m_pConnection, window);
  return x11::Succeeds(m_pConnection, xcb_map_window_checked(m_pConnection, window));
}

LinuxTopLevelWindows::LinuxTopLevelWindows(SetIcon setIcon) : m_setIcon(std::move(setIcon)) {}

LinuxTopLevelWindows::~LinuxTopLevelWindows() = default;

LinuxTopLevelWindows::Connection* LinuxTopLevelWindows::Connected() {
  if (!m_connection || !m_connection->IsAlive()) m_connection = Connection::Open();
  return m_connection.get();
}

bool LinuxTopLevelWindows::EnumWindows(const WNDENUMPROC& enumProc, std::int32_t lParam) {
  Connection* pConnection = Connected();
  if (pConnection == nullptr) return false;
  const auto windows = pConnection->Windows();
  if (!windows) return false;
  for (const WindowHandle hwnd : *windows) {
    // The procedure calls back into this object, and may have found the connection broken.
    pConnection = Connected();
    if (pConnection == nullptr) return false;
    if (pConnection->Exists(hwnd) && !enumProc(hwnd, lParam)) return false;
  }
  return true;
}

bool LinuxTopLevelWindows::IsWindowVisible(WindowHandle hwnd) {
  Connection* pConnection = Connected();
  return pConnection != nullptr && pConnection->IsVisible(hwnd);
}

int LinuxTopLevelWindows::GetWindowTextLengthA(WindowHandle hwnd) {
  Connection* pConnection = Connected();
  return pConnection == nullptr ? 0 : static_cast<int>(pConnection->Title(hwnd).size());
}

int LinuxTopLevelWindows::GetWindowTextA(WindowHandle hwnd, char* sBuffer, int nMaxCount) {
  Connection* pConnection = Connected();
  return Copy(pConnection == nullptr ? "" : pConnection->Title(hwnd), sBuffer, nMaxCount);
}

int LinuxTopLevelWindows::GetClassNameA(WindowHandle hwnd, char* sBuffer, int nMaxCount) {
  Connection* pConnection = Connected();
  return Copy(pConnection == nullptr ? "" : pConnection->ClassName(hwnd), sBuffer, nMaxCount);
}

bool LinuxTopLevelWindows::ShowWindow(WindowHandle hwnd, int nCmdShow) {
  if (nCmdShow != platform::SW_SHOW && nCmdShow != platform::SW_RESTORE) return false;
  Connection* pConnection = Connected();
  return pConnection != nullptr &&
         pConnection->Command(
             hwnd, nCmdShow == platform::SW_SHOW ? WindowCommand::Show : WindowCommand::Restore);
}

bool LinuxTopLevelWindows::SetForegroundWindow(WindowHandle hwnd) {
  Connection* pConnection = Connected();
  return pConnection != nullptr && pConnection->Command(hwnd, WindowCommand::Foreground);
}

WindowHandle LinuxTopLevelWindows::GetWindow(WindowHandle hwnd, std::uint32_t lCommand) {
  if (lCommand != platform::GW_OWNER) return 0;
  Connection* pConnection = Connected();
  return pConnection == nullptr ? 0 : pConnection->Owner(hwnd);
}

std::uint32_t LinuxTopLevelWindows::SendMessageA(WindowHandle hwnd, std::uint32_t lMessage,
                                                 std::uint32_t wParam, std::uint32_t lParam) {
  const bool bKind = wParam == platform::ICON_SMALL || wParam == platform::ICON_BIG;
  if (lMessage == platform::WM_SETICON && bKind) m_setIcon(hwnd, wParam, lParam);
  return 0;
}

}  // namespace quillorbit::linux_adapter
