#pragma once

#include <cstdint>
#include <functional>

#include "platform/form.h"

namespace quillorbit::platform {

inline constexpr int SW_SHOW = 5;
inline constexpr int SW_RESTORE = 9;
inline constexpr std::uint32_t GW_OWNER = 4;
inline constexpr std::uint32_t WM_SETICON = 0x0080;
inline constexpr std::uint32_t ICON_SMALL = 0;
inline constexpr std::uint32_t ICON_BIG = 1;

/// The top-level windows of all programs, hidden ones included. The platform's own operations: a
/// window that is gone, or belongs to a program that does not answer, makes them fail and return 0;
/// they do not throw and do not wait for the window's program.
class TopLevelWindows {
 public:
  virtual ~TopLevelWindows() = default;

  /// Called for one window, with the user value; returning false ends the enumeration.
  using WNDENUMPROC = std::function<bool(WindowHandle hwnd, std::int32_t lParam)>;
  virtual bool EnumWindows(const WNDENUMPROC& enumProc, std::int32_t lParam) = 0;

  [[nodiscard]] virtual bool IsWindowVisible(WindowHandle hwnd) = 0;
  /// In bytes of the system's ANSI code page, without the NUL. The real text may be shorter.
  [[nodiscard]] virtual int GetWindowTextLengthA(WindowHandle hwnd) = 0;
  /// Copies the text into a buffer of nMaxCount bytes, cut to leave room for its NUL; returns the
  /// bytes copied, without the NUL.
  virtual int GetWindowTextA(WindowHandle hwnd, char* sBuffer, int nMaxCount) = 0;
  virtual int GetClassNameA(WindowHandle hwnd, char* sBuffer, int nMaxCount) = 0;  ///< likewise
  virtual bool ShowWindow(WindowHandle hwnd, int nCmdShow) = 0;
  virtual bool SetForegroundWindow(WindowHandle hwnd) = 0;
  [[nodiscard]] virtual WindowHandle GetWindow(WindowHandle hwnd, std::uint32_t lCommand) = 0;
  /// Sends a message to a window of this program.
  virtual std::uint32_t SendMessageA(WindowHandle hwnd, std::uint32_t lMessage,
                                     std::uint32_t wParam, std::uint32_t lParam) = 0;
};

}  // namespace quillorbit::platform
