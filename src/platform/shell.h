#pragma once

#include <cstdint>

#include "platform/form.h"

namespace quillorbit::platform {

/// The shell's notification record, as the platform's headers lay it out for a 32-bit process, up
/// to and with `dwInfoFlags`. `cbSize` says how much of it is used: a record of the first layout
/// ends after 64 characters of `szTip`.
template <class Char>
struct NotifyIconData {
  std::uint32_t cbSize;
  WindowHandle hWnd;  ///< gets the callback messages
  std::uint32_t uID;  ///< with hWnd it identifies the icon
  std::uint32_t uFlags;
  std::uint32_t uCallbackMessage;
  IconHandle hIcon;
  Char szTip[128];
  std::uint32_t dwState;
  std::uint32_t dwStateMask;
  Char szInfo[256];
  union {
    std::uint32_t uTimeout;  ///< milliseconds
    std::uint32_t uVersion;
  };
  Char szInfoTitle[64];
  std::uint32_t dwInfoFlags;
};
using NOTIFYICONDATAA = NotifyIconData<char>;      ///< texts in the system's ANSI code page
using NOTIFYICONDATAW = NotifyIconData<char16_t>;  ///< texts in UTF-16
static_assert(sizeof(NOTIFYICONDATAA) == 488 && sizeof(NOTIFYICONDATAW) == 936);

// Commands
inline constexpr std::uint32_t NIM_ADD = 0;
inline constexpr std::uint32_t NIM_MODIFY = 1;
inline constexpr std::uint32_t NIM_DELETE = 2;
inline constexpr std::uint32_t NIM_SETVERSION = 4;

// Which fields of the record are valid
inline constexpr std::uint32_t NIF_MESSAGE = 1;
inline constexpr std::uint32_t NIF_ICON = 2;
inline constexpr std::uint32_t NIF_TIP = 4;
inline constexpr std::uint32_t NIF_INFO = 16;

// The balloon's icon
inline constexpr std::uint32_t NIIF_INFO = 1;
inline constexpr std::uint32_t NIIF_WARNING = 2;
inline constexpr std::uint32_t NIIF_ERROR = 3;

// Callback messages, and the notification codes that they carry
inline constexpr std::uint32_t WM_MOUSEMOVE = 0x0200;
inline constexpr std::uint32_t WM_LBUTTONDOWN = 0x0201;
inline constexpr std::uint32_t WM_LBUTTONUP = 0x0202;
inline constexpr std::uint32_t WM_LBUTTONDBLCLK = 0x0203;
inline constexpr std::uint32_t WM_RBUTTONDOWN = 0x0204;
inline constexpr std::uint32_t WM_RBUTTONUP = 0x0205;
inline constexpr std::uint32_t WM_RBUTTONDBLCLK = 0x0206;
inline constexpr std::uint32_t WM_MBUTTONDOWN = 0x0207;
inline constexpr std::uint32_t WM_MBUTTONUP = 0x0208;
inline constexpr std::uint32_t NIN_BALLOONSHOW = 0x0402;
inline constexpr std::uint32_t NIN_BALLOONHIDE = 0x0403;
inline constexpr std::uint32_t NIN_BALLOONTIMEOUT = 0x0404;
inline constexpr std::uint32_t NIN_BALLOONUSERCLICK = 0x0405;

/// The notification area. It reports what happens to an icon by the record's callback message, sent
/// to the record's window with the code in the low 16 bits of the second parameter; with
/// WM_MOUSEMOVE as that message the window raises MouseMove. Nothing here waits for another
/// process.
class Shell {
 public:
  virtual ~Shell() = default;

  /// Carries out a command on the record's icon; false when it is refused.
  virtual bool Shell_NotifyIconA(std::uint32_t lMessage, const NOTIFYICONDATAA& data) = 0;
  virtual bool Shell_NotifyIconW(std::uint32_t lMessage, const NOTIFYICONDATAW& data) = 0;
};

}  // namespace quillorbit::platform
