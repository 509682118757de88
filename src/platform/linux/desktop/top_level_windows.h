#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/top_level_windows.h"

namespace quillorbit::linux_adapter {

/// The windows of all programs on the X server that DISPLAY names. The ANSI code page here is
/// UTF-8. The connection is its own, opened at the first use, so that errors about windows that
/// have gone never reach the toolkit's.
///
/// ShowWindow and SetForegroundWindow leave a window of any copy of this program to the program
/// that owns it (window_commands.h). Windows of other programs are mapped, or activated by the
/// window manager. Both requests have reached the server on return.
class LinuxTopLevelWindows final : public platform::TopLevelWindows {
 public:
  /// Sets a window's icon of a kind (ICON_SMALL, ICON_BIG); 0 removes it.
  using SetIcon = std::function<void(platform::WindowHandle hwnd, std::uint32_t lKind,
                                     platform::IconHandle hIcon)>;

  explicit LinuxTopLevelWindows(SetIcon setIcon);
  ~LinuxTopLevelWindows() override;

  bool EnumWindows(const WNDENUMPROC& enumProc, std::int32_t lParam) override;
  [[nodiscard]] bool IsWindowVisible(platform::WindowHandle hwnd) override;
  [[nodiscard]] int GetWindowTextLengthA(platform::WindowHandle hwnd) override;
  int GetWindowTextA(platform::WindowHandle hwnd, char* sBuffer, int nMaxCount) override;
  int GetClassNameA(platform::WindowHandle hwnd, char* sBuffer, int nMaxCount) override;
  bool ShowWindow(platform::WindowHandle hwnd, int nCmdShow) override;
  bool SetForegroundWindow(platform::WindowHandle hwnd) override;
  [[nodiscard]] platform::WindowHandle GetWindow(platform::WindowHandle hwnd,
                                                 std::uint32_t lCommand) override;
  std::uint32_t SendMessageA(platform::WindowHandle hwnd, std::uint32_t lMessage,
                             std::uint32_t wParam, std::uint32_t lParam) override;

 private:
  class Connection;

  /// Null when there is no X server.
  [[nodiscard]] Connection* Connected();

  SetIcon m_setIcon;
  std::unique_ptr<Connection> m_connection;
};

}  // namespace quillorbit::linux_adapter
