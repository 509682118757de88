#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillorbit::test {

/// A window with a title that stands on the screen. Windows that the toolkit makes without a title
/// have the program's name instead. Places and sizes are pixels.
struct ScreenWindow {
  std::uint32_t nId;
  std::string sTitle;
  std::string sType;  ///< the first of _NET_WM_WINDOW_TYPE
  int x, y, nWidth, nHeight;
};

/// The windows of all programs, from the lowest to the topmost.
[[nodiscard]] std::vector<ScreenWindow> WindowsOnScreen();

/// The pixels of a window's rows from one to another, with those of windows above it: four bytes
/// each, blue, green, red and nothing. Empty when the window is gone.
[[nodiscard]] std::string Picture(const ScreenWindow& window, int nFirstRow, int nEndRow);

}  // namespace quillorbit::test
