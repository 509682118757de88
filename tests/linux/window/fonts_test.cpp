#include "platform/linux/window/fonts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

#include <QGuiApplication>
#include <QRect>

namespace quillorbit::linux_adapter {
namespace {

using platform::TextCoverage;

constexpr std::uint32_t nCenter = 1, nRight = 2, nMiddle = 4, nBottom = 8, nWrap = 0x10,
                        nSingleLine = 0x20, nNoPrefix = 0x800;

/// Texts of 12 pixels in rectangles of 280 by 40.
struct FontsTest : testing::Test {
  FontsTest() {
    font->Name("DejaVu Sans");
    font->Size(9);
  }
  const std::vector<std::uint8_t>& Draw(std::string_view sText, std::uint32_t lFormat = 0,
                                        std::uint32_t nWidth = 280, std::uint32_t nHeight = 40) {
    fonts.DrawText(font->hFont(), sText, nWidth, nHeight, lFormat, coverage);
    return coverage.pixels;
  }
  /// The smallest rectangle around what is covered; empty when nothing is.
  QRect Ink(std::string_view sText, std::uint32_t lFormat = 0, std::uint32_t nWidth = 280) {
    Draw(sText, lFormat, nWidth);
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
  EXPECT_EQ(*std::ranges::max_element(Draw("Lmm")), 255);
  EXPECT_NEAR(Ink("Lmm", nCenter).center().x(), 140, 2);
  EXPECT_GE(Ink("Lmm", nRight).right(), 276);
  EXPECT_EQ(Ink("Lmm", nMiddle | nBottom), left);  // only for a single line
  EXPECT_NEAR(Ink("Lmm", nMiddle | nSingleLine).center().y(), 20, 2);
  EXPECT_GE(Ink("Lmm", nBottom | nSingleLine).bottom(), 34);
  EXPECT_GT(Ink("mmm\nmmm").bottom(), 20);
  EXPECT_LT(Ink("mmm\nmmm", nSingleLine).bottom(), 16);
  EXPECT_LT(Ink("mmm mmm", 0, 60).bottom(), 16);
  EXPECT_GT(Ink("mmm mmm", nWrap, 60).bottom(), 20);
  EXPECT_GT(Ink("&On").bottom(), Ink("On").bottom());  // the access key's line
  EXPECT_EQ(Ink("a && b"), Ink("a & b", nNoPrefix));
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  EXPECT_LE(Ink("\u05E9\u05DC\u05D5\u05DD").left(), 3);
  QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  EXPECT_FALSE(Ink("\xFF\xFEz").isEmpty());
  EXPECT_TRUE(Ink(" ").isEmpty());  // nothing of the text before
  EXPECT_EQ(Ink("WWWWWWWW", 0, 61).right(), 60);

  dRatio = 2;
  EXPECT_NEAR(Ink("Lmm").width(), 2 * left.width(), 3);
  dRatio = 1.1;
  Draw("Lmm", 0, 100, 21);
  EXPECT_EQ(coverage.nWidth, 110U);  // not 111, though the product is 110.00000000000001
  EXPECT_EQ(coverage.nHeight, 24U);  // 23.1
}

TEST_F(FontsTest, HandleIsValidUntilTheDescriptionChanges) {
  const auto hSmall = font->hFont();
  const int nHeight = Ink("Text").height();
  font->Size(9);
  EXPECT_EQ(font->hFont(), hSmall);
  font->Size(18);
  EXPECT_NEAR(Ink("Text").height(), 2 * nHeight, 2);
  const auto hLarge = font->hFont();
  font->Name("DejaVu Serif");
  for (const auto hNone : {0U, hSmall, hLarge, font->hFont() + 1})
    EXPECT_THROW(fonts.DrawText(hNone, "a", 1, 1, 0, coverage), std::invalid_argument);
  for (const float fNone : {0.0F, 2049.0F, std::numeric_limits<float>::quiet_NaN()})
    EXPECT_THROW(font->Size(fNone), std::invalid_argument);
  EXPECT_THROW(Draw("a", 0, 16385), std::invalid_argument);
  font = LinuxFonts([] { return 1.0; }).NewStdFont();  // it may outlive its service
  font->Size(20);
}

}  // namespace
}  // namespace quillorbit::linux_adapter
