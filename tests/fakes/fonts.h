#pragma once

#include "fakes/call_log.h"
#include "platform/fonts.h"

namespace quillorbit::fakes {

struct FakeStdFont : Fake<StdFont> {
  using Fake::Fake;
  void Name(View s) override { Call(__func__, s); }
  void Size(float fPoints) override { Call(__func__, fPoints); }
  FontHandle hFont() const override { return 77; }
};

/// A text of n bytes covers the first n pixels of each row, row y by 100 + y.
struct FakeFonts : Fake<Fonts> {
  using Fake::Fake;
  Own<StdFont> NewStdFont() override {
    return Answer(std::make_unique<FakeStdFont>(log, "StdFont"), __func__);
  }
  void DrawText(FontHandle h, View sText, u32 nWidth, u32 nHeight, u32 lFormat,
                TextCoverage& text) override {
    Call("Fonts.DrawText", h, sText, nWidth, nHeight, lFormat);
    text = {nWidth * nRatio, nHeight * nRatio, {}};
    for (u32 y = 0; y < text.nHeight; ++y)
      for (u32 x = 0; x < text.nWidth; ++x)
        text.pixels.push_back(static_cast<std::uint8_t>(x < sText.size() ? 100 + y : 0));
  }

  const FontHandle hFont = 77;
  u32 nRatio = 1;  ///< pixels of the coverage to a pixel of the rectangle
};

}  // namespace quillorbit::fakes
