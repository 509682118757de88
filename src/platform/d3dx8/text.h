#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {

/// The font service has to outlive the font, and the handle has to stay valid as long.
[[nodiscard]] std::shared_ptr<platform::ID3DXFont> CreateFont(
    platform::Fonts& fonts, const std::shared_ptr<platform::IDirect3DDevice8>& Device,
    platform::FontHandle hFont);

/// Draws a text in the rectangle, clipped to it; an empty text or rectangle draws nothing. A text
/// that was drawn lately in a rectangle of that size costs neither rasterising nor memory. Throws
/// D3DError (D3DERR_INVALIDCALL) for a font that CreateFont has not made and for rectangle sides
/// above 4096. After a failure, too, the states are as they were.
void DrawText(const std::shared_ptr<platform::ID3DXFont>& Font, platform::D3DCOLOR Color,
              std::string_view sText, const platform::RECT& Rect, std::uint32_t Format);

}  // namespace quillorbit::d3dx8
