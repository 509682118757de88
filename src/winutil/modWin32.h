#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace quillorbit {

/// Creates the named mutex, and the one of that name behind "Global\"; both exist until the process
/// ends. Failures are ignored.
void CreateAppMutex(platform::Process& process, const std::string& sName);

/// Sets a window's large and small icons from an icon resource of this program, and with
/// `bSetOwner` also its top-level owner's. Returns the small icon's handle; 0 when there is no such
/// resource, and then the windows have no icon.
platform::IconHandle SetWindowIcon(platform::Platform& platform, platform::WindowHandle hWnd,
                                   const char* sIconName, bool bSetOwner);

}  // namespace quillorbit
