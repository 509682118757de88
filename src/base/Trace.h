#pragma once

#include <string_view>

namespace quillorbit {

/// The diagnostic hook: the program reports here what happens. It has no output; a breakpoint here
/// sees every text.
void Trace(std::string_view sText);

}  // namespace quillorbit
