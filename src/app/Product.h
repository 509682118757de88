#pragma once

#include <string_view>

namespace quillorbit {

inline constexpr std::string_view sProductName = "Quillorbit";

}  // namespace quillorbit
