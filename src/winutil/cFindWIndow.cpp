#include "winutil/cFindWIndow.h"

#include "base/Numbers.h"

namespace quillorbit {

void cFindWIndow::TitleToFind(std::string_view sTitle) {
  m_titleToFind = sTitle;
  m_hWndFound = 0;
}

void cFindWIndow::ClassToFind(std::string_view sClass) {
  m_classToFind = sClass;
  m_hWndFound = 0;
}

bool cFindWIndow::FindWindow() {
  m_hWndFound = 0;
  m_windows.EnumerateWindows(*this);
  return m_hWndFound != 0;
}

void cFindWIndow::EnumWindow(platform::WindowHandle hwnd, bool& bStop) {
  if (!m_windows.IsWindowVisible(hwnd)) return;
  if (m_titleToFind.empty() && m_classToFind.empty()) return;
  if (!m_titleToFind.empty() && !TitleMatches(hwnd)) return;
  if (!m_classToFind.empty() && !ClassMatches(hwnd)) return;
  m_hWndFound = hwnd;
  bStop = true;
}

std::int32_t cFindWIndow::Identifier() { return RoundToInt32(m_process.Rnd() * 1e9); }

bool cFindWIndow::TitleMatches(platform::WindowHandle hwnd) {
  return MatchesPattern(m_titleToFind, m_windows.GetWindowTitle(hwnd));
}

bool cFindWIndow::ClassMatches(platform::WindowHandle hwnd) {
  return MatchesPattern(m_classToFind, m_windows.GetWindowClass(hwnd));
}

bool cFindWIndow::MatchesPattern(std::string_view sPattern, std::string_view sText) {
  const bool bFirst = sPattern.starts_with('%');
  const bool bLast = sPattern.ends_with('%');
  if (!bFirst && !bLast) return sText == sPattern;
  if (bFirst) sPattern.remove_prefix(1);
  if (bLast && !sPattern.empty()) sPattern.remove_suffix(1);
  return sText.find(sPattern) != std::string_view::npos;
}

}  // namespace quillorbit
