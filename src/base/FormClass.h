#pragma once

#include <string_view>

namespace quillorbit {

/// The platform's window class of this program's forms, by which one copy finds another's window.
inline constexpr std::string_view sFormClass = "ThunderRT6FormDC";

}  // namespace quillorbit
