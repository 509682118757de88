#pragma once

#include <cmath>
#include <string_view>

#include <QColor>
#include <QFont>
#include <QString>

#include "platform/controls.h"

namespace quillorbit::linux_adapter {

// The seam's units in the toolkit's. The toolkit's pixels are 1/96 inch; on a scaled display it
// scales them itself.

inline constexpr float fTwipsPerPixel = 15;  // 1440 twips and 96 pixels to the inch

[[nodiscard]] inline int ToPixels(float fTwips) {
  return static_cast<int>(std::lround(fTwips / fTwipsPerPixel));
}

[[nodiscard]] inline float ToTwips(int nPixels) {
  return static_cast<float>(nPixels) * fTwipsPerPixel;
}

/// The font in the same pixels, whatever resolution the desktop gives its own texts.
[[nodiscard]] inline QFont ToQFont(const platform::Font& font) {
  QFont qFont(QString::fromUtf8(font.sName.data(), static_cast<qsizetype>(font.sName.size())));
  qFont.setStyleHint(QFont::SansSerif);
  qFont.setPixelSize(static_cast<int>(std::lround(font.fPoints * 96 / 72)));
  return qFont;
}

[[nodiscard]] inline QColor ToQColor(platform::Colour colour) {
  return {static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
          static_cast<int>(colour >> 16 & 0xFF)};
}

[[nodiscard]] inline QString ToQString(std::string_view s) {
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

}  // namespace quillorbit::linux_adapter
