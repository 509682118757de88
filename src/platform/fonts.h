#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace quillorbit::platform {

/// A font's handle; 0 is none.
using FontHandle = std::uint32_t;

/// A description of a font, with the handle of the font that it describes.
class StdFont {
 public:
  virtual ~StdFont() = default;
  virtual void Name(
      std::string_view sName) = 0;       ///< face name; a platform without it uses its nearest
  virtual void Size(float fPoints) = 0;  ///< in points, 96 pixels to the inch
  /// Valid until the description changes or the object is destroyed.
  [[nodiscard]] virtual FontHandle hFont() const = 0;
};

/// How far a text covers each pixel of a rectangle: a byte each, row by row from the top, from 0
/// (free) to 255 (covered). On a scaled display it may have more pixels than the rectangle.
struct TextCoverage {
  std::uint32_t nWidth = 0, nHeight = 0;
  std::vector<std::uint8_t> pixels;
};

class Fonts {
 public:
  virtual ~Fonts() = default;

  [[nodiscard]] virtual std::unique_ptr<StdFont> NewStdFont() = 0;

  /// Draws a UTF-8 text into a rectangle of that size in pixels, clipped to it, by the platform's
  /// formatting flags: 0 is from the top left corner, without word wrapping, '&' marking an access
  /// key. The memory of `coverage` is reused. Throws std::invalid_argument for a handle that is
  /// not valid.
  virtual void DrawText(FontHandle hFont, std::string_view sText, std::uint32_t nWidth,
                        std::uint32_t nHeight, std::uint32_t lFormat, TextCoverage& coverage) = 0;
};

}  // namespace quillorbit::platform
