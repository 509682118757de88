#include "winutil/modWin32.h"

namespace quillorbit {

void CreateAppMutex(std::string_view /*sName*/) {}

std::uint32_t SetWindowIcon(platform::WindowHandle /*hWnd*/, std::string_view /*sIconName*/,
                            bool /*bSetOwner*/) {
  return 0;
}

}  // namespace quillorbit
