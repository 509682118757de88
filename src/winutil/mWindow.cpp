#include "winutil/mWindow.h"

#include <array>
#include <string_view>

#include "base/Utf16.h"

namespace quillorbit {

void mWindow::EnumerateWindows(IEnumWindowsSink& sink) {
  if (m_sink != nullptr) return;
  struct Walk {
    explicit Walk(mWindow& window, IEnumWindowsSink& sinkOfWalk) : m_window(window) {
      m_window.m_sink = &sinkOfWalk;
    }
    ~Walk() { m_window.m_sink = nullptr; }
    mWindow& m_window;
  };
  const Walk walk(*this, sink);
  m_windows.EnumWindows(
      [this](platform::WindowHandle hwnd, std::int32_t) { return EnumWindowsProc(hwnd); },
      sink.Identifier());
}

bool mWindow::EnumWindowsProc(platform::WindowHandle hwnd) {
  bool bStop = false;
  m_sink->EnumWindow(hwnd, bStop);
  return !bStop;
}

std::string mWindow::GetWindowTitle(platform::WindowHandle hwnd) {
  const int n = m_windows.GetWindowTextLengthA(hwnd);
  if (n <= 0) return {};
  std::string sBuffer(static_cast<std::size_t>(n) + 1, '\0');
  const int m = m_windows.GetWindowTextA(hwnd, sBuffer.data(), n + 1);
  return FromCodePage(std::string_view(sBuffer).substr(0, static_cast<std::size_t>(m)));
}

std::string mWindow::GetWindowClass(platform::WindowHandle hwnd) {
  std::array<char, 260> buffer{};
  const int m = m_windows.GetClassNameA(hwnd, buffer.data(), static_cast<int>(buffer.size()));
  return FromCodePage({buffer.data(), static_cast<std::size_t>(m)});
}

bool mWindow::IsWindowVisible(platform::WindowHandle hwnd) {
  return m_windows.IsWindowVisible(hwnd);
}

void mWindow::ActivateWindow(platform::WindowHandle hwnd) {
  m_windows.ShowWindow(hwnd, platform::SW_RESTORE);
  m_windows.ShowWindow(hwnd, platform::SW_SHOW);
  m_windows.SetForegroundWindow(hwnd);
}

std::string mWindow::FromCodePage(std::string_view sText) const {
  return ToUtf8(m_codePage.MultiByteToWideChar(sText));
}

}  // namespace quillorbit
