#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/d3dx8/image_file.h"
#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {

/// Reads a JPEG, PNG, BMP, TGA or PNM file (its name is UTF-8) into a texture in A8R8G8B8; the
/// alpha channel is kept. A width or height of 0 or D3DX_DEFAULT is the image's own, and as many
/// levels go down to one pixel. Where the size changes, a pixel comes from the four source pixels
/// around its centre. Pixels of the colour `ColorKey` (0: none) become transparent black before.
/// Throws D3DError: D3DERR_INVALIDCALL for filters other than D3DX_FILTER_LINEAR, for other formats
/// and for sides above 4096; D3DXERR_INVALIDDATA, naming the file, when it holds no such image, one
/// with a side above 4096, or one beyond the budget, from which it is taken.
[[nodiscard]] std::shared_ptr<platform::IDirect3DTexture8> CreateTextureFromFileEx(
    const std::shared_ptr<platform::IDirect3DDevice8>& Device, const std::string& sFile,
    std::uint32_t Width, std::uint32_t Height, std::uint32_t MipLevels, std::uint32_t Usage,
    platform::D3DFORMAT Format, platform::D3DPOOL Pool, std::uint32_t Filter,
    std::uint32_t MipFilter, platform::D3DCOLOR ColorKey, ImageBudget& budget);

}  // namespace quillorbit::d3dx8
