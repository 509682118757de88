#include "winutil/modWin32.h"

namespace quillorbit {
namespace {

/// The window at the end of the chain of owners; a window without owner itself. Where other
/// programs can set owners, the chain may be a circle: then it ends somewhere on it.
platform::WindowHandle TopOwner(platform::TopLevelWindows& windows, platform::WindowHandle hWnd) {
  constexpr int nLongestChain = 100;
  for (int i = 0; i < nLongestChain; ++i) {
    const platform::WindowHandle hOwner = windows.GetWindow(hWnd, platform::GW_OWNER);
    if (hOwner == 0) break;
    hWnd = hOwner;
  }
  return hWnd;
}

}  // namespace

void CreateAppMutex(platform::Process& process, const std::string& sName) {
  process.CreateMutexA(nullptr, false, sName.c_str());
  process.CreateMutexA(nullptr, false, ("Global\\" + sName).c_str());
}

platform::IconHandle SetWindowIcon(platform::Platform& platform, platform::WindowHandle hWnd,
                                   const char* sIconName, bool bSetOwner) {
  const platform::WindowHandle hTopOwner = bSetOwner ? TopOwner(platform.windows, hWnd) : 0;
  const auto setIcon = [&](std::uint32_t lKind, int iWidthMetric, int iHeightMetric) {
    const int cx = platform.resources.GetSystemMetrics(iWidthMetric);
    const int cy = platform.resources.GetSystemMetrics(iHeightMetric);
    const platform::IconHandle hIcon = platform.resources.LoadImageA(
        platform.process.hInstance(), sIconName, platform::IMAGE_ICON, cx, cy, platform::LR_SHARED);
    if (bSetOwner) platform.windows.SendMessageA(hTopOwner, platform::WM_SETICON, lKind, hIcon);
    platform.windows.SendMessageA(hWnd, platform::WM_SETICON, lKind, hIcon);
    return hIcon;
  };
  setIcon(platform::ICON_BIG, platform::SM_CXICON, platform::SM_CYICON);
  return setIcon(platform::ICON_SMALL, platform::SM_CXSMICON, platform::SM_CYSMICON);
}

}  // namespace quillorbit
