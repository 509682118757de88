#pragma once

#include <string>
#include <string_view>

namespace quillorbit::d3dx8 {

/// The name of a texture file, in UTF-8, from what stands in a model. It ends at a zero byte.
/// Backslashes, which exporters double, become single ones. A name that is not UTF-8 is one of code
/// page 1252, the one of most systems that exported models.
[[nodiscard]] std::string TextureName(std::string_view stored);

}  // namespace quillorbit::d3dx8
