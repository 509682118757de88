#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/event.h"
#include "platform/platform.h"

namespace quillorbit {

/// The mouse button of an event.
enum class SysTrayButton : std::int32_t { Left = 1, Right = 2 };

/// An icon in the notification area with its tip, balloons and menu: a window that is never shown
/// and gets the shell's notifications about the icon. It knows nothing of the rest of the program.
///
/// The first operation adds the icon. The shell's results are ignored: without a notification area
/// everything works, only without an icon.
class frmSysTray {
 public:
  explicit frmSysTray(platform::Platform& platform);

  /// Shows a balloon on the icon; nothing where the shell has none. `eIcon`: 0 none, 1 information,
  /// 2 warning, 3 error. How long it stays is the shell's decision. Throws std::overflow_error for
  /// a time-out that does not fit 32 bits.
  void ShowBalloonTip(std::string_view sMessage, std::string_view sTitle = {},
                      std::int32_t eIcon = 0, double lTimeOutMs = 0);
  [[nodiscard]] std::string ToolTip();
  void ToolTip(std::string_view sTip);
  [[nodiscard]] platform::IconHandle IconHandle();
  void IconHandle(platform::IconHandle hIcon);

  /// Adds an item to the icon's menu and returns its index. An "&" marks the caption's access key.
  std::int32_t AddMenuItem(std::string_view sCaption, std::string_view sKey = {},
                           bool bDefault = false);
  void EnableMenuItem(std::int32_t lIndex, bool bState);
  /// Removes an item: the captions and keys of those above move down by one, and nothing else of
  /// them does. Item 0 stays and only loses its caption. Returns 0. Not to be called from
  /// MenuClick.
  std::int32_t RemoveMenuItem(std::int32_t iIndex);
  [[nodiscard]] std::int32_t DefaultMenuIndex();
  void DefaultMenuIndex(std::int32_t lIndex);
  /// Shows the menu at the mouse cursor, and returns when it has closed.
  void ShowMenu();

  /// Removes the icon. Its handlers may call it; the object has to stay until they have returned.
  void Unload();

  platform::Event<SysTrayButton> SysTrayMouseDown;  ///< left: on the release of the button
  platform::Event<SysTrayButton> SysTrayMouseUp;    ///< right only
  platform::Event<> SysTrayMouseMove;
  platform::Event<SysTrayButton> SysTrayDoubleClick;
  platform::Event<std::int32_t, const std::string&> MenuClick;  ///< the item's index and key
  platform::Event<> BalloonShow;
  platform::Event<> BalloonHide;
  platform::Event<> BalloonTimeOut;
  platform::Event<> BalloonClicked;

 private:
  struct MenuElement {
    std::unique_ptr<platform::MenuItem> item;
    std::string sTag;  ///< its key
  };

  void Load();
  void GetWindowsVersion();
  void Form_MouseMove(std::int32_t lCode);
  void Form_QueryUnload();
  void mnuSysTray_Click(std::int32_t lIndex);

  void NewElement();
  [[nodiscard]] std::int32_t HighestIndex() const;
  [[nodiscard]] bool IsValidIndex(std::int32_t lIndex) const;

  [[nodiscard]] std::size_t TipFieldBytes() const;  ///< of the wide form
  [[nodiscard]] std::uint32_t IconDataSize() const;
  void StoreTip(std::string_view sTip);
  void NotifyIcon(std::uint32_t lMessage);

  platform::Platform& m_platform;
  std::unique_ptr<platform::Form> m_form;
  std::unique_ptr<platform::Menu> mnuPopup;
  std::vector<MenuElement> mnuSysTray;  ///< element 0 always exists

  /// The record that every command is sent with. Its texts are always UTF-16; for the ANSI form
  /// they are converted when a command is sent.
  platform::NOTIFYICONDATAW m_iconData{};
  bool m_loaded = false;
  bool m_useUnicode = false;
  bool m_shell5 = false;
  bool m_firstItemUsed = false;
  std::int32_t m_defaultIndex = 0;
};

}  // namespace quillorbit
