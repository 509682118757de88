#pragma once

#include <cstddef>
#include <string_view>

// The image decoder is a library. It is safe with a file that WhyUnsafe() has nothing
// against, once LimitDecoder() has been called.

namespace quillorbit::d3dx8 {

/// How many bytes the decoder may allocate at once on this thread, from now on. Compressed data say
/// nothing of how much comes out of them.
void LimitDecoder(std::size_t nMostBytes);

/// Whether a file is a JPEG file that draws its pixels several times, each time with more detail.
[[nodiscard]] bool IsProgressiveJpeg(std::string_view bytes);

/// Why the decoder must not be given a file; null when it may be.
[[nodiscard]] const char* WhyUnsafe(std::string_view bytes);

}  // namespace quillorbit::d3dx8
