#pragma once

#include <string>

#include "platform/code_page.h"
#include "platform/top_level_windows.h"
#include "winutil/IEnumWindowsSink.h"

namespace quillorbit {

/// Enumerates, inspects and activates the top-level windows of all programs. Failures of the
/// platform are ignored: a window that is gone has an empty title and class, and is not activated.
class mWindow {
 public:
  mWindow(platform::TopLevelWindows& windows, const platform::CodePage& codePage)
      : m_windows(windows), m_codePage(codePage) {}

  /// Passes each top-level window to the sink until that stops the enumeration. Called again during
  /// an enumeration, it does nothing.
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
  IEnumWindowsSink* m_sink = nullptr;  ///< of the enumeration that is running, if any
};

}  // namespace quillorbit
