#pragma once

#include <string>

#include "platform/code_page.h"
#include "platform/top_level_windows.h"
#include "winutil/IEnumWindowsSink.h"

namespace quillorbit {

/// A look at the top-level windows of all programs. What the platform cannot do is passed over: a
/// window that is gone has an empty title and class, and is not activated.
class mWindow {
 public:
  mWindow(platform::TopLevelWindows& windows, const platform::CodePage& codePage)
      : m_windows(windows), m_codePage(codePage) {}

  /// Hands each top-level window to the sink until that stops the walk. While a walk runs another
  /// one is not begun: its sink gets no call.
  void EnumerateWindows(IEnumWindowsSink& sink);

  [[nodiscard]] std::string GetWindowTitle(platform::WindowHandle hwnd);
  [[nodiscard]] std::string GetWindowClass(platform::WindowHandle hwnd);  ///< 259 bytes at most
  [[nodiscard]] bool IsWindowVisible(platform::WindowHandle hwnd);

  /// Restores, shows and foregrounds the window.
  void ActivateWindow(platform::WindowHandle hwnd);

 private:
  [[nodiscard]] bool EnumWindowsProc(platform::WindowHandle hwnd);
  [[nodiscard]] std::string FromCodePage(std::string_view sText) const;

  platform::TopLevelWindows& m_windows;
  const platform::CodePage& m_codePage;
  IEnumWindowsSink* m_sink = nullptr;  ///< of the walk that runs, if any
};

}  // namespace quillorbit
