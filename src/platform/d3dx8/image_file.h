#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillorbit::d3dx8 {

/// Pixels as textures in A8R8G8B8 store them: blue, green, red, alpha; row by row from the top.
struct Image {
  std::uint32_t nWidth, nHeight;
  std::vector<std::uint8_t> pixels;
};

/// What is left for the images of a model. Measured, the whole of it takes a second to decode, and
/// 330 MB at most.
struct ImageBudget {
  /// Pixels, as many as one image of the largest size has. Those of progressive JPEG files and with
  /// 16 bits a channel count twice, and a small image counts as one of 128 x 128 pixels.
  std::uint64_t nPixels = std::uint64_t{4096} * 4096;
  std::uint64_t nFileBytes = 64 << 20;
};

/// Reads a JPEG, PNG, BMP, TGA or PNM file (its name is UTF-8) with sides of at most 4096 pixels,
/// and takes it from the budget. Throws D3DError (D3DXERR_INVALIDDATA), naming the file, when it
/// holds no such image, or one beyond the budget.
[[nodiscard]] Image ReadImage(const std::string& sFile, ImageBudget& budget);

/// The same from a file's bytes; the error does not name a file.
[[nodiscard]] Image DecodeImage(std::string_view bytes, ImageBudget& budget);

}  // namespace quillorbit::d3dx8
