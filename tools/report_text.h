#pragma once

#include <cstddef>
#include <string>

#include "joystick/JoystickReport.h"

namespace quillorbit::tools {

/// "X  75  Y  75  Z  75  Zr  75  mask 00000005  buttons 1 3" and a line feed.
[[nodiscard]] std::string PrintedLine(const JoystickReport& report);

/// The same with a bar for each axis, as much of it as fits into a width in columns, in ASCII.
[[nodiscard]] std::string LiveLine(const JoystickReport& report, std::size_t nColumns);

}  // namespace quillorbit::tools
