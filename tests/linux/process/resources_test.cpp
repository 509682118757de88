#include "platform/linux/process/resources.h"

#include <climits>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/process/code_page.h"

namespace quillorbit::linux_tests {
namespace {

using platform::IconHandle;

class Icons : public testing::Test {
 protected:
  IconHandle Load(const char* sName, int cx, int cy) {
    return m_resources.LoadImageA(1, sName, platform::IMAGE_ICON, cx, cy, platform::LR_SHARED);
  }
  QImage Image(const char* sName, int nSize) {
    return m_resources.Image(Load(sName, nSize, nSize));
  }
  template <class Condition>
  static int Count(const QImage& image, Condition condition) {
    int n = 0;
    for (int i = 0; i < image.width() * image.height(); ++i)
      n += condition(image.pixel(i % image.width(), i / image.width()));
    return n;
  }

  linux_adapter::LinuxResources m_resources;
};

TEST_F(Icons, HaveMaskedImagesOfTheirOwnAtTheirSizes) {
  const int nSmall = m_resources.GetSystemMetrics(platform::SM_CXSMICON);
  const int nLarge = m_resources.GetSystemMetrics(platform::SM_CXICON);
  for (const auto& [sName, nSize] : {std::pair("OK", nSmall),
                                     {"ERROR", nSmall},
                                     {"AAA", nSmall},
                                     {"AAA", nLarge},
                                     {"AAA", 48}}) {
    const QImage image = Image(sName, nSize);
    ASSERT_EQ(image.size(), QSize(nSize, nSize)) << sName;
    const int nClear = Count(image, [](QRgb pixel) { return qAlpha(pixel) == 0; });
    const int nOpaque = Count(image, [](QRgb pixel) { return qAlpha(pixel) == 255; });
    EXPECT_GT(nClear, nSize * nSize / 10) << sName << nSize;
    EXPECT_EQ(nClear + nOpaque, nSize * nSize) << sName << nSize;  // not so after scaling
  }
}

TEST_F(Icons, TellASignalFromNoneByShape) {
  const QImage ok = Image("OK", 16), error = Image("ERROR", 16);
  int nDifferent = 0;
  for (int i = 0; i < 16 * 16; ++i)
    nDifferent += qAlpha(ok.pixel(i % 16, i / 16)) != qAlpha(error.pixel(i % 16, i / 16));
  EXPECT_GT(nDifferent, 16 * 16 / 5);
  EXPECT_GT(qRed(error.pixel(11, 11)), 2 * qBlue(error.pixel(11, 11)));  // the cross
}

TEST_F(Icons, AreScaledFromTheNearestSize) {
  const auto scaled = [this](int nFrom, const QSize& size) {
    return Image("AAA", nFrom).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  };
  EXPECT_EQ(Image("AAA", 1), scaled(16, {1, 1}));
  EXPECT_EQ(Image("AAA", 24), scaled(32, {24, 24}));
  EXPECT_EQ(Image("AAA", 256), scaled(48, {256, 256}));
  EXPECT_EQ(m_resources.Image(Load("AAA", 16, 20)), scaled(16, {16, 20}));
}

TEST_F(Icons, HaveOneHandleForEachNameAndSize) {
  const std::vector handles = {Load("AAA", 16, 16), Load("AAA", 32, 32), Load("AAA", 16, 32),
                               Load("OK", 16, 16)};
  EXPECT_EQ(std::set(handles.begin(), handles.end()).size(), handles.size());
  EXPECT_EQ(Load("AAA", 16, 16), handles[0]);
  EXPECT_EQ(Load("OK", 16, 16), handles[3]);
  for (const IconHandle hNone : {IconHandle{0}, handles[3] + 1, UINT32_MAX})
    EXPECT_TRUE(m_resources.Image(hNone).isNull()) << hNone;
}

TEST_F(Icons, AreMissingForWhatIsNoNameTypeOrSizeOfOne) {
  for (const char* sName : {"", "NONE", "aaa", "AAA.ico", "./AAA", "../ICON/AAA", "AAA "})
    EXPECT_EQ(Load(sName, 16, 16), 0U) << sName;
  EXPECT_EQ(Load(nullptr, 16, 16), 0U);
  EXPECT_EQ(m_resources.LoadImageA(1, "AAA", 0, 16, 16, platform::LR_SHARED), 0U);
  for (const int nSize : {0, -1, 257, INT_MAX, INT_MIN}) {
    EXPECT_EQ(Load("AAA", nSize, 16), 0U) << nSize;
    EXPECT_EQ(Load("AAA", 16, nSize), 0U) << nSize;
  }
}

TEST(CodePage, IsUtf8AndReplacesWhatCannotBeConverted) {
  const linux_adapter::LinuxCodePage codePage;
  const std::u16string sWide(u"\uFEFFJo\u00FF\0\U0001F579", 7);
  const std::string sBytes("\xEF\xBB\xBFJo\xC3\xBF\0\xF0\x9F\x95\xB9", 12);
  EXPECT_EQ(codePage.WideCharToMultiByte(sWide), sBytes);
  EXPECT_EQ(codePage.MultiByteToWideChar(sBytes), sWide);
  const std::u16string sHalves = {0xD83D, 'z', 0xDD79, 0xD83D};
  EXPECT_EQ(codePage.WideCharToMultiByte(sHalves), "\xEF\xBF\xBDz\xEF\xBF\xBD\xEF\xBF\xBD");
  // Byte by byte: a stray one, an overlong form, half a pair and a character that is cut off.
  EXPECT_EQ(codePage.MultiByteToWideChar("a\xFFz"), u"a\uFFFDz");
  EXPECT_EQ(codePage.MultiByteToWideChar("\xC0\xAFz"), u"\uFFFD\uFFFDz");
  EXPECT_EQ(codePage.MultiByteToWideChar("\xED\xA0\xBDz"), u"\uFFFD\uFFFD\uFFFDz");
  EXPECT_EQ(codePage.MultiByteToWideChar("a\xC3"), u"a\uFFFD");
}

}  // namespace
}  // namespace quillorbit::linux_tests
