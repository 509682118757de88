#pragma once

#include "fakes/call_log.h"
#include "platform/fonts.h"

namespace quillorbit::fakes {

struct FakeStdFont : FakeObject<StdFont> {
  FakeStdFont(CallLog& l, FontHandle h) : FakeObject(l, "StdFont"), hHandle(h) {}
  void Name(View s) override { Call("Name", s); }
  void Size(float fPoints) override { Call("Size", fPoints); }
  FontHandle hFont() const override { return hHandle; }
  const FontHandle hHandle;
};

/// Font objects whose only handle is hFont. A text of n bytes covers the first n pixels of each
/// row, row y by 100 + y.
struct FakeFonts : Fake<Fonts> {
  using Fake::Fake;
  Own<StdFont> NewStdFont() override {
    log.Call("NewStdFont");
    return std::make_unique<FakeStdFont>(log, hFont);
  }
  void DrawText(FontHandle hUsed, View sText, u32 nWidth, u32 nHeight, u32 lFormat,
                TextCoverage& coverage) override {
    log.Call("Fonts.DrawText", hUsed, sText, nWidth, nHeight, lFormat);
    coverage.nWidth = nWidth * nRatio;
    coverage.nHeight = nHeight * nRatio;
    coverage.pixels.assign(std::size_t{coverage.nWidth} * coverage.nHeight, 0);
    const std::size_t nCovered = std::min<std::size_t>(sText.size(), coverage.nWidth);
    for (std::size_t y = 0; y < coverage.nHeight; ++y)
      std::fill_n(coverage.pixels.data() + y * coverage.nWidth, nCovered,
                  static_cast<std::uint8_t>(100 + y));
  }

  FontHandle hFont = 77;
  u32 nRatio = 1;  ///< pixels of the coverage to a pixel of the rectangle
};

}  // namespace quillorbit::fakes
