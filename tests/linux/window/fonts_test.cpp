#include "platform/linux/window/fonts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>

#include <QGuiApplication>
#include <QRect>

namespace quillorbit::linux_tests {
namespace {

using platform::TextCoverage;

constexpr std::uint32_t nCenter = 1, nRight = 2, nMiddle = 4, nBottom = 8, nWrap = 0x10,
                        nSingleLine = 0x20, nNoPrefix = 0x800;

/// The smallest rectangle around what is covered; empty when nothing is.
QRect Ink(const TextCoverage& coverage) {
  QRect ink;
  const int nWidth = static_cast<int>(coverage.nWidth);
  for (int i = 0; i < static_cast<int>(coverage.pixels.size()); ++i)
    if (coverage.pixels[static_cast<std::size_t>(i)] != 0)
      ink |= QRect(i % nWidth, i / nWidth, 1, 1);
  return ink;
}

class Fonts : public testing::Test {
 protected:
  Fonts() {
    m_font->Name("DejaVu Sans");
    m_font->Size(9);  // 12 pixels
  }
  TextCoverage Draw(std::string_view sText, std::uint32_t lFormat = 0, std::uint32_t nWidth = 280,
                    std::uint32_t nHeight = 40) {
    TextCoverage coverage;
    m_fonts.DrawText(m_font->hFont(), sText, nWidth, nHeight, lFormat, coverage);
    EXPECT_EQ(coverage.pixels.size(), std::size_t{coverage.nWidth} * coverage.nHeight);
    return coverage;
  }

  double m_dRatio = 1;
  linux_adapter::LinuxFonts m_fonts{[this] { return m_dRatio; }};
  std::unique_ptr<platform::StdFont> m_font = m_fonts.NewStdFont();
};

TEST_F(Fonts, DrawALineFromTheTopLeftCorner) {
  const TextCoverage coverage = Draw("X: 75  Y: 75");
  EXPECT_EQ(coverage.nWidth, 280U);
  EXPECT_EQ(coverage.nHeight, 40U);
  const QRect ink = Ink(coverage);
  EXPECT_LE(ink.left(), 2);
  EXPECT_GE(ink.width(), 50);  // 12 characters of 4 to 12 pixels
  EXPECT_LE(ink.width(), 140);
  EXPECT_LE(ink.bottom(), 16);
  EXPECT_GE(ink.height(), 8);  // the capitals of a font of 12 pixels
  EXPECT_LE(ink.height(), 12);
  EXPECT_EQ(*std::ranges::max_element(coverage.pixels), 255);
  // Edges are smooth.
  EXPECT_GT(std::set(coverage.pixels.begin(), coverage.pixels.end()).size(), 8U);
  EXPECT_TRUE(Ink(Draw("")).isEmpty());
  EXPECT_TRUE(Draw("a", 0, 0, 20).pixels.empty());
}

TEST_F(Fonts, ForgetWhatTheCoverageHeld) {
  TextCoverage coverage = Draw("some text");
  const std::uint8_t* pMemory = coverage.pixels.data();
  m_fonts.DrawText(m_font->hFont(), " ", 100, 20, 0, coverage);
  EXPECT_TRUE(Ink(coverage).isEmpty());
  EXPECT_EQ(coverage.pixels.size(), 2000U);
  EXPECT_EQ(coverage.pixels.data(), pMemory);
}

TEST_F(Fonts, ClipWhatIsTooLarge) {
  const std::string sLong(60, 'W');
  const TextCoverage wide = Draw(sLong), part = Draw(sLong, 0, 101, 7);
  EXPECT_EQ(Ink(wide).right(), 279);
  EXPECT_LE(Ink(wide).bottom(), 16);  // nothing wraps
  for (std::size_t y = 0; y < 7; ++y)
    EXPECT_TRUE(std::equal(part.pixels.begin() + static_cast<std::ptrdiff_t>(y * 101),
                           part.pixels.begin() + static_cast<std::ptrdiff_t>((y + 1) * 101),
                           wide.pixels.begin() + static_cast<std::ptrdiff_t>(y * 280)))
        << y;
}

TEST_F(Fonts, UnderlineAccessKeys) {
  const TextCoverage plain = Draw("Open", nNoPrefix);
  EXPECT_EQ(Draw("Open").pixels, plain.pixels);
  const QRect ink = Ink(Draw("&Open"));
  EXPECT_EQ(ink.right(), Ink(plain).right());
  EXPECT_NE(Draw("&Open").pixels, plain.pixels);
  EXPECT_NE(Draw("&Open").pixels, Draw("O&pen").pixels);
  EXPECT_EQ(Draw("a && b").pixels, Draw("a & b", nNoPrefix).pixels);
  EXPECT_GT(Ink(Draw("a && b", nNoPrefix)).right(), Ink(Draw("a && b")).right());
}

TEST_F(Fonts, AlignByTheFormat) {
  const auto ink = [this](std::uint32_t lFormat) { return Ink(Draw("Lmm", lFormat)); };
  const QRect left = ink(0);
  EXPECT_NEAR(ink(nCenter).center().x(), 140, 2);
  EXPECT_GE(ink(nRight).right(), 276);
  EXPECT_NEAR(ink(nRight).width(), left.width(), 1);
  EXPECT_EQ(ink(nMiddle | nBottom), left);  // only for a single line
  EXPECT_NEAR(ink(nMiddle | nSingleLine).center().y(), 20, 2);
  EXPECT_GE(ink(nBottom | nSingleLine).bottom(), 34);
  EXPECT_EQ(ink(0xFFFF0000 | 0x100), left);  // unknown, and clipped in any case
}

TEST_F(Fonts, BreakLinesWhereTheFormatSaysSo) {
  const QRect one = Ink(Draw("mmm mmm")), two = Ink(Draw("mmm\nmmm"));
  EXPECT_LT(one.bottom(), 16);
  EXPECT_GT(two.bottom(), 20);
  EXPECT_LT(two.right(), one.right());
  EXPECT_LT(Ink(Draw("mmm\nmmm", nSingleLine)).bottom(), 16);
  const auto nBoth = static_cast<std::uint32_t>(one.right());
  EXPECT_LT(Ink(Draw("mmm mmm", 0, nBoth)).bottom(), 16);
  EXPECT_GT(Ink(Draw("mmm mmm", nWrap, nBoth)).bottom(), 20);
}

TEST_F(Fonts, DrawEveryScriptAndAnyBytes) {
  // All are at the left side when they are not asked to be at the right one.
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  for (const char* sText : {"\u05E9\u05DC\u05D5\u05DD", "\u03B1\u03B2", "\u0436", "\xFF\xFEz"}) {
    const QRect ink = Ink(Draw(sText));
    EXPECT_FALSE(ink.isEmpty()) << sText;
    EXPECT_LE(ink.left(), 3) << sText;
    EXPECT_LE(ink.right(), 60) << sText;
  }
  QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  Draw(std::string_view("a\0b\x01\xE2\x80\xAE", 7));
  Draw(std::string(100000, '&'));
}

TEST_F(Fonts, AreSharpOnAScaledDisplay) {
  const QRect once = Ink(Draw("Sharp"));
  m_dRatio = 2;
  const TextCoverage twice = Draw("Sharp", nRight | nBottom | nSingleLine);
  EXPECT_EQ(twice.nWidth, 560U);
  EXPECT_EQ(twice.nHeight, 80U);
  EXPECT_NEAR(Ink(twice).width(), 2 * once.width(), 3);
  EXPECT_NEAR(Ink(twice).height(), 2 * once.height(), 3);
  EXPECT_GE(Ink(twice).right(), 554);
  EXPECT_GE(Ink(twice).bottom(), 68);
  m_dRatio = 1.25;
  EXPECT_EQ(Draw("Sharp", 0, 281, 21).nWidth, 352U);  // 351.25
  EXPECT_EQ(Draw("Sharp", 0, 281, 21).nHeight, 27U);  // 26.25
  m_dRatio = 1.1;
  EXPECT_EQ(Draw("Sharp", 0, 100).nWidth, 110U);
}

TEST_F(Fonts, AreKnownByTheirHandles) {
  const auto draw = [this](platform::FontHandle hFont, std::uint32_t nWidth = 99) {
    TextCoverage coverage;
    m_fonts.DrawText(hFont, "Text", nWidth, 40, 0, coverage);
    return coverage;
  };
  const auto hSmall = m_font->hFont();
  const QRect small = Ink(draw(hSmall));
  m_font->Size(9);
  m_font->Name("DejaVu Sans");
  EXPECT_EQ(m_font->hFont(), hSmall);
  m_font->Size(18);
  const auto hLarge = m_font->hFont();
  EXPECT_NEAR(Ink(draw(hLarge)).height(), 2 * small.height(), 2);
  m_font->Name("DejaVu Serif");
  EXPECT_NE(draw(m_font->hFont()).pixels, TextCoverage().pixels);
  auto other = m_fonts.NewStdFont();
  const auto hOther = other->hFont();
  EXPECT_NEAR(Ink(draw(hOther)).height(), small.height(), 3);  // 11 pixels
  other.reset();
  for (const auto hNone : {0U, hSmall, hLarge, hOther, UINT32_MAX})
    EXPECT_THROW(draw(hNone), std::invalid_argument) << hNone;
  EXPECT_EQ(std::set({hSmall, hLarge, hOther, m_font->hFont()}).size(), 4U);

  for (const float fNone : {0.0F, -1.0F, 2049.0F, std::numeric_limits<float>::quiet_NaN()})
    EXPECT_THROW(m_font->Size(fNone), std::invalid_argument) << fNone;
  EXPECT_THROW(draw(m_font->hFont(), 16385), std::invalid_argument);
  EXPECT_THROW(draw(m_font->hFont(), UINT32_MAX), std::invalid_argument);
}

TEST(FontObjects, MayOutliveTheService) {
  auto fonts = std::make_unique<linux_adapter::LinuxFonts>([] { return 1.0; });
  const auto font = fonts->NewStdFont();
  fonts.reset();
  font->Size(20);
  EXPECT_NE(font->hFont(), 0U);
}

}  // namespace
}  // namespace quillorbit::linux_tests

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
