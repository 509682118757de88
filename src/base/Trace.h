#pragma once

#include <string_view>

namespace quillorbit {

/// The diagnostic hook: the program's pieces tell it what happens, and it puts nothing out. A
/// debugger's breakpoint here sees every text.
void Trace(std::string_view sText);

}  // namespace quillorbit
