#include "platform/d3dx8/texture.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <sys/stat.h>

#include <QImage>

#include "d3dx8/image_files.h"
#include "fakes/direct3d8.h"
#include "support/child_process.h"

namespace quillorbit::d3dx8_tests {
namespace {

using platform::D3DError;
using testing::ElementsAre;

using Pixels = std::vector<std::uint32_t>;

/// A device whose textures' rows are longer than their pixels.
class PaddedTexture : public fakes::FakeTexture {
 public:
  using FakeTexture::FakeTexture;
  platform::D3DLOCKED_RECT LockRect(std::uint32_t Level) override {
    EXPECT_TRUE(m_rows.empty()) << "locked twice";
    m_rows.assign(std::size_t{4} * Height(Level) * (Width(Level) + 3), std::byte{0xEE});
    return {static_cast<std::int32_t>(4 * (Width(Level) + 3)), m_rows.data()};
  }
  void UnlockRect(std::uint32_t Level) override {
    const std::size_t nRow = std::size_t{4} * Width(Level), nPitch = nRow + 12;
    ASSERT_EQ(m_rows.size(), nPitch * Height(Level));
    for (std::size_t y = 0; y < Height(Level); ++y) {
      std::copy_n(m_rows.data() + y * nPitch, nRow, levels[Level].data() + y * nRow);
      for (std::size_t i = nRow; i < nPitch; ++i)
        ASSERT_EQ(m_rows[y * nPitch + i], std::byte{0xEE}) << "written past a row's end";
    }
    m_rows.clear();
  }

 private:
  std::vector<std::byte> m_rows;
};

class PaddedDevice : public fakes::FakeDirect3DDevice {
 public:
  using FakeDirect3DDevice::FakeDirect3DDevice;
  std::shared_ptr<platform::IDirect3DTexture8> CreateTexture(
      std::uint32_t Width, std::uint32_t Height, std::uint32_t Levels, std::uint32_t Usage,
      platform::D3DFORMAT Format, platform::D3DPOOL Pool) override {
    FakeDirect3DDevice::CreateTexture(Width, Height, Levels, Usage, Format, Pool);
    return std::make_shared<PaddedTexture>("texture", Width, Height, Levels);
  }
};

/// What CreateTextureFromFileEx is called with beside the file.
struct Options {
  std::uint32_t nWidth = 0, nHeight = 0, nLevels = 1;
  platform::D3DFORMAT eFormat = platform::D3DFMT_UNKNOWN;
  std::uint32_t eFilter = platform::D3DX_FILTER_LINEAR, eMipFilter = platform::D3DX_FILTER_LINEAR;
  platform::D3DCOLOR key = 0;
};

class Textures : public testing::Test {
 protected:
  std::shared_ptr<PaddedTexture> Read(const std::string& sFile, const Options& o = {}) {
    return std::dynamic_pointer_cast<PaddedTexture>(d3dx8::CreateTextureFromFileEx(
        m_device, sFile, o.nWidth, o.nHeight, o.nLevels, 0, o.eFormat, platform::D3DPOOL_MANAGED,
        o.eFilter, o.eMipFilter, o.key));
  }
  std::string Write(const std::string& sName, const std::string& bytes) {
    std::ofstream(m_folder / sName, std::ios::binary) << bytes;
    return m_folder / sName;
  }
  /// A PNG file of these pixels, A8R8G8B8.
  std::string WritePng(int nWidth, const Pixels& pixels) {
    return Write("image.png", Encode(ToImage(nWidth, pixels), "PNG"));
  }
  static Pixels Level(const PaddedTexture& texture, std::uint32_t iLevel) {
    Pixels pixels;
    for (std::uint32_t y = 0; y < texture.Height(iLevel); ++y)
      for (std::uint32_t x = 0; x < texture.Width(iLevel); ++x)
        pixels.push_back(texture.Pixel(iLevel, x, y));
    return pixels;
  }
  /// The number of the error and its text.
  std::pair<std::int32_t, std::string> Failure(const std::string& sFile, const Options& o = {}) {
    try {
      Read(sFile, o);
    } catch (const D3DError& e) {
      return {e.lNumber, e.what()};
    }
    return {0, "none"};
  }
  auto IsInvalid(const std::string& sFile, const std::string& sWhy) {
    return testing::Pair(platform::D3DXERR_INVALIDDATA, sFile + ": " + sWhy);
  }

  test::TemporaryFolder m_folder;
  fakes::CallLog m_log;
  std::shared_ptr<PaddedDevice> m_device = std::make_shared<PaddedDevice>(m_log);
};

void ExpectNear(const Pixels& actual, const Pixels& expected, int nTolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_EQ(qAlpha(actual[i]), qAlpha(expected[i])) << i;
    EXPECT_NEAR(qRed(actual[i]), qRed(expected[i]), nTolerance) << i;
    EXPECT_NEAR(qGreen(actual[i]), qGreen(expected[i]), nTolerance) << i;
    EXPECT_NEAR(qBlue(actual[i]), qBlue(expected[i]), nTolerance) << i;
  }
}

const Pixels corners = {0x80FF0000, 0x0000FF00, 0xFF0000FF, 0xFF123456, 0x01FFFFFF, 0xFF000000};

TEST_F(Textures, KeepTheColoursAndTheAlphaOfAPng) {
  EXPECT_EQ(Level(*Read(WritePng(3, corners)), 0), corners);
  EXPECT_THAT(m_log.Take(), ElementsAre("CreateTexture 3, 2, 1, 0, 21, 1"));
  const auto given =
      Read(WritePng(3, corners),
           {.nWidth = 3, .nHeight = platform::D3DX_DEFAULT, .eFormat = platform::D3DFMT_A8R8G8B8});
  EXPECT_EQ(Level(*given, 0), corners);
}

TEST_F(Textures, AreReadFromEveryKindOfFile) {
  const QImage opaque =
      ToImage(3, {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF123456, 0xFFFFFFFF, 0xFF000000});
  for (const char* sFormat : {"BMP", "PPM"}) {
    const auto texture =
        Read(Write("image", Encode(opaque.convertToFormat(QImage::Format_RGB888), sFormat)));
    EXPECT_EQ(Level(*texture, 0), ToPixels(opaque)) << sFormat;
  }
  EXPECT_EQ(Level(*Read(Write("image", Tga(3, corners))), 0), corners);
}

TEST_F(Textures, ReadAJpegAsAnotherDecoderDoes) {
  for (const bool bProgressive : {false, true}) {
    const std::string bytes = Jpeg(Gradient(40, 24), bProgressive);
    const auto texture = Read(Write("image.jpg", bytes));
    const Pixels expected = ToPixels(QImage::fromData(QByteArray::fromStdString(bytes)));
    // Either may round, and spread the colours of a block, in its own way.
    ExpectNear(Level(*texture, 0), expected, 4);
  }
}

TEST_F(Textures, LoseAColourKeyBeforeTheSizeChanges) {
  const Pixels pixels = {0xFF00FF00, 0xFF0000C8, 0xFE00FF00, 0xFF00FF01};
  const auto keyed = Read(WritePng(2, pixels), {.key = 0xFF00FF00});
  EXPECT_THAT(Level(*keyed, 0), ElementsAre(0, pixels[1], pixels[2], pixels[3]));
  const auto halved = Read(WritePng(2, {0xFF00FF00, 0xFF0000C8}), {.nWidth = 1, .key = 0xFF00FF00});
  EXPECT_THAT(Level(*halved, 0), ElementsAre(0x80000064));  // 255 / 2 is rounded up
}

TEST_F(Textures, TakeTheFourNearestPixels) {
  const auto resized = [this](int nFrom, const Pixels& pixels, std::uint32_t w, std::uint32_t h) {
    return Level(*Read(WritePng(nFrom, pixels), {.nWidth = w, .nHeight = h}), 0);
  };
  // Four of two: the centres are at -1/4, 1/4, 3/4 and 5/4 of the way from one to the other.
  EXPECT_THAT(resized(2, {0x00000000, 0xFF64C804}, 4, 1),
              ElementsAre(0, 0x40193201, 0xBF4B9603, 0xFF64C804));
  EXPECT_THAT(resized(1, {0x00000000, 0xFF64C804}, 1, 4),
              ElementsAre(0, 0x40193201, 0xBF4B9603, 0xFF64C804));
  // Two of three: at 1/4 and 7/4. Of six, the second column takes nothing of the first.
  EXPECT_THAT(resized(3, {0xFF000000, 0xFF000064, 0xFF0000C8}, 2, 1),
              ElementsAre(0xFF000019, 0xFF0000AF));
  // One of 2 x 2 is their mean, 10.5, rounded up; one of 4 x 1 is that of the middle ones.
  EXPECT_THAT(resized(2, {0x00000004, 0x00000008, 0x0000000C, 0x00000012}, 1, 1), ElementsAre(11));
  EXPECT_THAT(resized(4, {0xFF0000FF, 0xFF000008, 0xFF00000A, 0xFF0000FF}, 1, 1),
              ElementsAre(0xFF000009));
  // In both directions at once: 1/4 and 3/4 of the way each.
  EXPECT_THAT(resized(2, {0x00000000, 0x00000040, 0x00000080, 0x000000C0}, 4, 4),
              ElementsAre(0x00, 0x10, 0x30, 0x40,  //
                          0x20, 0x30, 0x50, 0x60,  //
                          0x60, 0x70, 0x90, 0xA0,  //
                          0x80, 0x90, 0xB0, 0xC0));
}

TEST_F(Textures, AreEnlargedAndHalvedAsAnotherLibraryDoes) {
  const QImage image = Gradient(32, 16);
  const std::string sFile = Write("image.png", Encode(image, "PNG"));
  for (const QSize& size : {QSize(16, 8), QSize(64, 32), QSize(47, 23)}) {
    const auto texture = Read(sFile, {.nWidth = static_cast<std::uint32_t>(size.width()),
                                      .nHeight = static_cast<std::uint32_t>(size.height())});
    const Pixels expected =
        ToPixels(image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    ExpectNear(Level(*texture, 0), expected, 3);  // that one rounds to 8 bits in between
  }
}

TEST_F(Textures, HaveAChainOfMeans) {
  const auto texture = Read(WritePng(4, {0xFF000000, 0xFF000004, 0x00FF0000, 0x00FF0000,  //
                                         0xFF000008, 0xFF00000D, 0x00FF0000, 0x00FF0000}),
                            {.nLevels = platform::D3DX_DEFAULT});
  EXPECT_THAT(m_log.Take(), ElementsAre("CreateTexture 4, 2, 0, 0, 21, 1"));
  ASSERT_EQ(texture->GetLevelCount(), 3U);
  EXPECT_THAT(Level(*texture, 1), ElementsAre(0xFF000006, 0x00FF0000));  // 25 / 4
  EXPECT_THAT(Level(*texture, 2), ElementsAre(0x80800003));

  // Five columns become two, whose centres are at 3/4 and 13/4.
  const auto odd = Read(WritePng(5, {0, 0x14, 0x50, 0x64, 0xB4}), {.nLevels = 0});
  ASSERT_EQ(odd->GetLevelCount(), 3U);
  EXPECT_THAT(Level(*odd, 1), ElementsAre(0x0F, 0x78));
  EXPECT_THAT(Level(*odd, 2), ElementsAre(0x44));  // 67.5

  const auto limited = Read(WritePng(1, Pixels(16, 0xFF102030)), {.nLevels = 3});
  ASSERT_EQ(limited->GetLevelCount(), 3U);
  EXPECT_EQ(Level(*limited, 2), Pixels(4, 0xFF102030));
}

TEST_F(Textures, RefuseWhatTheyWereNotMadeFor) {
  const std::string sFile = WritePng(3, corners);
  for (const Options& o : {Options{.eFilter = 1},
                           {.eFilter = platform::D3DX_DEFAULT},
                           {.eMipFilter = 5},
                           {.eFormat = platform::D3DFMT_X8R8G8B8},
                           {.nWidth = 4097},
                           {.nHeight = 4097}})
    EXPECT_EQ(Failure(sFile, o).first, platform::D3DERR_INVALIDCALL);
  EXPECT_THAT(m_log.Take(), ElementsAre());
}

TEST_F(Textures, TellWhyAFileIsNone) {
  const std::string sNone = m_folder / "none.png", sPipe = m_folder / "pipe.png";
  ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
  for (const std::string& sFile : {sNone, sPipe, m_folder.Path().string()})
    EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "there is no such file"));

  const std::string sUnknown = "Image not of any known type, or corrupt";
  for (const std::string& bytes : {std::string(), std::string("a text\n"), std::string(99, '\0')}) {
    const std::string sFile = Write("image", bytes);
    EXPECT_THAT(Failure(sFile), IsInvalid(sFile, sUnknown));
  }
  std::string png = Encode(Gradient(40, 24), "PNG");
  std::string sFile = Write("cut.png", png.substr(0, png.size() / 2));
  EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "Corrupt PNG"));
  sFile = Write("huge.png", Patched(png, 16, {0, 1, 0x86, 0xA0, 0, 1, 0x86, 0xA0}));
  EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "Very large image (corrupt?)"));
  sFile = Write("empty.ppm", "P6 0 0 255\n");
  EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "the image is empty"));
  sFile = Write("deep.pgm", "P5 2 1 256\n" + std::string(4, 'x'));
  EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "PNM not supported: 16 bits"));
  EXPECT_THAT(m_log.Take(), ElementsAre());
}

TEST_F(Textures, AreNotMadeOfABombOfCompressedData) {
  const std::string sFile = Write("bomb.png", PngOfZeros(8, std::size_t{100} << 20U));
  EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "Out of memory"));
}

TEST_F(Textures, AreNotMadeOfAJpegThatHarmsItsDecoder) {
  const std::string jpeg = Jpeg(Gradient(40, 24), false);
  // A Huffman table of 17 symbols of 12 bits more than a byte can name.
  std::string table("\xFF\xC4\x01\x24\x00", 5);
  table += std::string(11, '\0') + '\xFF' + '\x12' + std::string(3, '\0') + std::string(273, 'x');
  // Scans without data; a decoder fills in the pixels.
  const auto withScans = [](const std::string& bytes, int nScans) {
    const std::size_t iBack = bytes.size() - 2, iScan = bytes.find("\xFF\xDA");
    std::string scans;
    for (int i = 0; i < nScans; ++i) scans += bytes.substr(iScan, 14);
    return bytes.substr(0, iBack) + scans + bytes.substr(iBack);
  };
  const std::string progressive = Jpeg(Gradient(40, 24), true);
  const std::size_t iEnd = jpeg.size() - 2, iFirst = 2;
  for (const std::string& bytes :
       {jpeg.substr(0, iFirst) + table + jpeg.substr(iFirst),
        '\xFF' + jpeg.substr(0, iFirst) + "\xFF\xFF" + table + jpeg.substr(iFirst),
        jpeg.substr(0, iEnd) + table + jpeg.substr(iEnd),
        jpeg.substr(0, iEnd) + "\xFF\xD0\x7F" + table + jpeg.substr(iEnd), withScans(jpeg, 4),
        withScans(progressive, 50)}) {
    const std::string sFile = Write("image.jpg", bytes);
    EXPECT_THAT(Failure(sFile), IsInvalid(sFile, "Corrupt JPEG (tables or scans)"));
  }
  // What looks like such a table inside a comment is none.
  const std::string comment = std::string("\xFF\xFE\x01\x29\x20", 5) + table;
  for (const std::string& bytes : {jpeg.substr(0, iFirst) + comment + jpeg.substr(iFirst),
                                   withScans(jpeg, 3), withScans(progressive, 30)})
    EXPECT_EQ(Read(Write("image.jpg", bytes))->Width(0), 40U);
}

}  // namespace
}  // namespace quillorbit::d3dx8_tests
