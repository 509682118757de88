#pragma once

#include <string>
#include <string_view>

#include "platform/process.h"
#include "winutil/IEnumWindowsSink.h"
#include "winutil/mWindow.h"

namespace quillorbit {

/// Finds the first visible top-level window whose title and class match. A pattern's first and last
/// character may be "%": then the text has to contain the rest of the pattern, anywhere; otherwise
/// it has to be equal. An empty pattern is ignored; if both are empty, no window is found.
class cFindWIndow : private IEnumWindowsSink {
 public:
  cFindWIndow(mWindow& windows, platform::Process& process)
      : m_windows(windows), m_process(process) {}

  void TitleToFind(std::string_view sTitle);
  [[nodiscard]] const std::string& TitleToFind() const { return m_titleToFind; }
  void ClassToFind(std::string_view sClass);
  [[nodiscard]] const std::string& ClassToFind() const { return m_classToFind; }

  /// The window that the last search found; 0 when it found none, or a pattern was set since.
  [[nodiscard]] platform::WindowHandle hWndFound() const { return m_hWndFound; }
  /// Whether a window was found.
  bool FindWindow();

 private:
  void EnumWindow(platform::WindowHandle hwnd, bool& bStop) override;
  [[nodiscard]] std::int32_t Identifier() override;  ///< random, 0 to 1,000,000,000

  [[nodiscard]] bool TitleMatches(platform::WindowHandle hwnd);
  [[nodiscard]] bool ClassMatches(platform::WindowHandle hwnd);
  [[nodiscard]] static bool MatchesPattern(std::string_view sPattern, std::string_view sText);

  mWindow& m_windows;
  platform::Process& m_process;
  std::string m_titleToFind;
  std::string m_classToFind;
  platform::WindowHandle m_hWndFound = 0;
};

}  // namespace quillorbit
