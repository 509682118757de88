#include "platform/linux/window/fonts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>

#include <QGuiApplication>
#include <QRect>

namespace quillorbit::linux_adapter {
namespace {

using platform::TextCoverage;

constexpr std::uint32_t nCenter = 1, nBottom = 8, nWrap = 0x10, nSingleLine = 0x20;

/// Texts of 12 pixels in rectangles of 280 by 40.
struct FontsTest : testing::Test {
  FontsTest() {
    font->Name("DejaVu Sans");
    font->Size(9);
  }
  /// The smallest rectangle around what is covered; empty when nothing is.
  QRect Ink(std::string_view sText, std::uint32_t lFormat = 0, std::uint32_t nWidth = 280) {
    fonts.DrawText(font->hFont(), sText, nWidth, 40, lFormat, coverage);
    QRect ink;
    for (std::size_t i = 0; i < coverage.pixels.size(); ++i)
      if (coverage.pixels[i] != 0)
        ink |= QRect(static_cast<int>(i % coverage.nWidth), static_cast<int>(i / coverage.nWidth),
                     1, 1);
    return ink;
  }

  static inline int argc = 1;
  static inline char* argv[] = {const_cast<char*>("fonts_test"), nullptr};
  const QGuiApplication application{argc, argv};
  double dRatio = 1;
  LinuxFonts fonts{[this] { return dRatio; }};
  std::unique_ptr<platform::StdFont> font = fonts.NewStdFont();
  TextCoverage coverage;
};

TEST_F(FontsTest, TextStandsWhereItsFormatSays) {
  const QRect left = Ink("Lmm");
  EXPECT_TRUE(QRect(0, 0, 40, 16).contains(left) && left.height() >= 8);
  EXPECT_EQ(*std::ranges::max_element(coverage.pixels), 255);
  EXPECT_NEAR(Ink("Lmm", nCenter).center().x(), 140, 2);
  EXPECT_GE(Ink("Lmm", nBottom | nSingleLine).bottom(), 34);
  EXPECT_GT(Ink("mmm mmm", nWrap, 60).bottom(), 20);
  EXPECT_TRUE(Ink(" ").isEmpty());  // nothing of the text before
  EXPECT_EQ(Ink("WWWWWWWW", 0, 61).right(), 60);

  dRatio = 2;
  const auto hSmall = font->hFont();
  font->Size(18);
  EXPECT_NEAR(Ink("Lmm").width(), 4 * left.width(), 4);
  EXPECT_THROW(fonts.DrawText(hSmall, "a", 1, 1, 0, coverage), std::invalid_argument);
}

}  // namespace
}  // namespace quillorbit::linux_adapter
