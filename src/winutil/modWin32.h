#pragma once

#include <cstdint>
#include <string_view>

#include "platform/form.h"

namespace quillorbit {

/// Creates the two named mutexes that exist while the program runs. It does nothing yet.
void CreateAppMutex(std::string_view sName);

/// Sets a window's large and small icons from an icon resource, and with `bSetOwner` also its
/// top-level owner's; returns the small icon's handle, 0 when there is none. It does nothing yet.
std::uint32_t SetWindowIcon(platform::WindowHandle hWnd, std::string_view sIconName,
                            bool bSetOwner);

}  // namespace quillorbit
