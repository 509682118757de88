#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

#include "fakes/call_log.h"
#include "platform/fonts.h"

namespace quillorbit::fakes {

/// Font objects whose only handle is hFont. A text of n bytes covers the first n pixels of each
/// row, row y by 100 + y.
class FakeFonts : public platform::Fonts {
 public:
  explicit FakeFonts(CallLog& log) : m_log(log) {}

  std::unique_ptr<platform::StdFont> NewStdFont() override {
    m_log.Call("NewStdFont");
    return std::make_unique<Font>(m_log, hFont);
  }
  void DrawText(platform::FontHandle hUsed, std::string_view sText, std::uint32_t nWidth,
                std::uint32_t nHeight, std::uint32_t lFormat,
                platform::TextCoverage& coverage) override {
    m_log.Call("Fonts.DrawText ", hUsed, ", ", sText, ", ", nWidth, ", ", nHeight, ", ", lFormat);
    coverage.nWidth = nWidth * nRatio;
    coverage.nHeight = nHeight * nRatio;
    coverage.pixels.assign(std::size_t{coverage.nWidth} * coverage.nHeight, 0);
    const std::size_t nCovered = std::min<std::size_t>(sText.size(), coverage.nWidth);
    for (std::size_t y = 0; y < coverage.nHeight; ++y)
      std::fill_n(coverage.pixels.data() + y * coverage.nWidth, nCovered,
                  static_cast<std::uint8_t>(100 + y));
  }

  platform::FontHandle hFont = 77;
  std::uint32_t nRatio = 1;  ///< pixels of the coverage to a pixel of the rectangle

 private:
  class Font : public platform::StdFont {
   public:
    Font(CallLog& log, platform::FontHandle handle) : m_log(log), m_hFont(handle) {}
    void Name(std::string_view sName) override { m_log.Call("StdFont.Name = ", sName); }
    void Size(float fPoints) override { m_log.Call("StdFont.Size = ", fPoints); }
    platform::FontHandle hFont() const override { return m_hFont; }

   private:
    CallLog& m_log;
    platform::FontHandle m_hFont;
  };

  CallLog& m_log;
};

}  // namespace quillorbit::fakes
