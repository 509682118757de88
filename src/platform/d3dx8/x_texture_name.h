#pragma once

#include <string>
#include <string_view>

namespace quillorbit::d3dx8 {

/// The name of a texture file, from the text in a model: a relative path in UTF-8 with "/" between
/// its folders, which every system understands.
///
/// - The text ends at a zero byte. One that is not UTF-8 is in code page 1252, that of most systems
///   that exported models.
/// - "/" and "\" separate folders, once or several times: exporters double backslashes.
/// - A path that leads out of the folder (with a drive, from the root, or by "..") is one of the
///   system where the model was made: only its last part counts, the file's own name.
[[nodiscard]] std::string TextureName(std::string_view stored);

}  // namespace quillorbit::d3dx8
