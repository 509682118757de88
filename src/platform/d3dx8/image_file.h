#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillorbit::d3dx8 {

/// Pixels as textures in A8R8G8B8 store them: blue, green, red, alpha; row by row from the top.
struct Image {
  std::uint32_t nWidth, nHeight;
  std::vector<std::uint8_t> pixels;
};

/// Reads a JPEG, PNG, BMP, TGA or PNM file (its name is UTF-8) with sides of at most 4096 pixels.
/// Throws D3DError (D3DXERR_INVALIDDATA), naming the file, when it holds no such image.
[[nodiscard]] Image ReadImage(const std::string& sFile);

}  // namespace quillorbit::d3dx8
