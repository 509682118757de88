#pragma once

#include <string>
#include <string_view>

namespace quillorbit {

// Texts are UTF-8; the platform's wide texts are UTF-16. Invalid sequences become U+FFFD, the
// replacement character.

[[nodiscard]] std::u16string ToUtf16(std::string_view sUtf8);
[[nodiscard]] std::string ToUtf8(std::u16string_view sUtf16);

}  // namespace quillorbit
