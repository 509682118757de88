#include <cstring>
#include <fstream>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include "fakes/direct3d8.h"
#include "fakes/fonts.h"
#include "platform/d3dx8/library.h"
#include "support/child_process.h"

namespace quillorbit::test {
namespace {

using Pixels = std::vector<std::uint32_t>;  // A8R8G8B8

std::string Encode(const QImage& image, const char* sFormat, bool bProgressive = false) {
  QBuffer buffer;
  QImageWriter writer(&buffer, sFormat);
  writer.setProgressiveScanWrite(bProgressive);
  writer.write(image);
  return buffer.data().toStdString();
}

std::string Png(int nWidth, const Pixels& pixels) {
  return Encode(QImage(reinterpret_cast<const uchar*>(pixels.data()), nWidth,
                       static_cast<int>(pixels.size()) / nWidth, QImage::Format_ARGB32),
                "PNG");
}

/// Smooth, and different in every direction and channel.
QImage Gradient() {
  QImage image(40, 24, QImage::Format_RGB32);
  for (int i = 0; i < 40 * 24; ++i)
    image.setPixel(i % 40, i / 40, qRgb(i % 40 * 6, i / 40 * 10, 200 - (i % 40 + i / 20) * 2));
  return image;
}

struct Library : d3dx8::Library {
  using d3dx8::Library::Library;
  std::shared_ptr<platform::DirectX8> NewDirectX8() override { return nullptr; }
};

struct Textures : testing::Test {
  std::shared_ptr<fakes::FakeTexture> Load(const std::string& sName, std::uint32_t w = 0,
                                           std::uint32_t h = 0, std::uint32_t nLevels = 1,
                                           platform::D3DCOLOR key = 0) {
    return std::dynamic_pointer_cast<fakes::FakeTexture>(d3dx->CreateTextureFromFileEx(
        device, folder / sName, w, h, nLevels, 0, platform::D3DFMT_UNKNOWN,
        platform::D3DPOOL_MANAGED, 3, 3, key));
  }
  Pixels Read(const std::string& sBytes, std::uint32_t w = 0, std::uint32_t h = 0,
              platform::D3DCOLOR key = 0) {
    Write("image", sBytes);
    return Level(*Load("image", w, h, 1, key), 0);
  }
  static Pixels Level(const fakes::FakeTexture& texture, std::uint32_t iLevel) {
    Pixels pixels(texture.levels.at(iLevel).size() / 4);
    std::memcpy(pixels.data(), texture.levels[iLevel].data(), 4 * pixels.size());
    return pixels;
  }
  /// Begins a new model.
  void Write(const std::string& sName, const std::string& sBytes) {
    std::ofstream(folder / sName, std::ios::binary) << sBytes;
    d3dx = library.NewD3DX8();
  }

  TemporaryFolder folder;
  fakes::CallLog log;
  fakes::FakeFonts fonts{log};
  std::string sReport;
  Library library{fonts, [this](const char* sWhy) { sReport = sWhy; }};
  std::shared_ptr<platform::D3DX8> d3dx;
  std::shared_ptr<fakes::FakeDirect3DDevice> device =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
};

TEST_F(Textures, AreWhatAnotherLibraryReads) {
  const Pixels pixels = {0x80FF0000, 0x0000FF00, 0xFF0000FF, 0xFF123456, 0x01FFFFFF, 0xFF000000};
  EXPECT_EQ(Read(Png(3, pixels)), pixels);
  EXPECT_EQ(log.Take(), std::vector<std::string>{"CreateTexture 3, 2, 1, 0, 21, 1"});
  for (const auto& [sFormat, bProgressive] :
       {std::pair{"BMP", false}, {"PPM", false}, {"JPG", false}, {"JPG", true}}) {
    const std::string sBytes = Encode(Gradient(), sFormat, bProgressive);
    for (const QSize size : {QSize(40, 24), QSize(20, 12), QSize(57, 31)}) {
      const QImage expected = QImage::fromData(QByteArray::fromStdString(sBytes))
                                  .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
      const Pixels actual = Read(sBytes, static_cast<std::uint32_t>(size.width()),
                                 static_cast<std::uint32_t>(size.height()));
      for (int i = 0; i < size.width() * size.height(); ++i) {
        const QRgb a = actual.at(static_cast<std::size_t>(i));
        const QRgb b = expected.pixel(i % size.width(), i / size.width());
        ASSERT_TRUE(std::abs(qRed(a) - qRed(b)) <= 5 && std::abs(qGreen(a) - qGreen(b)) <= 5 &&
                    std::abs(qBlue(a) - qBlue(b)) <= 5 && qAlpha(a) == 255)
            << sFormat << ' ' << size.width() << ' ' << i;  // each rounds in its own way
      }
    }
  }
}

TEST_F(Textures, AreResampledFromTheFourNearestPixelsWithoutTheColourKey) {
  // In both directions at once: a quarter and three quarters of the way each.
  EXPECT_EQ(Read(Png(2, {0, 0x40, 0x80, 0xC0}), 4, 4),
            (Pixels{0x00, 0x10, 0x30, 0x40, 0x20, 0x30, 0x50, 0x60,  //
                    0x60, 0x70, 0x90, 0xA0, 0x80, 0x90, 0xB0, 0xC0}));
  EXPECT_EQ(Read(Png(4, {0xFF00FF00, 0xFF0000C8, 0xFE00FF00, 0xFE00FF00}), 2, 0, 0xFF00FF00),
            (Pixels{0x80000064, 0xFE00FF00}));
  Write("image", Png(5, {0, 20, 80, 100, 180, 0, 20, 80, 100, 180}));
  const auto texture = Load("image", 0, platform::D3DX_DEFAULT, platform::D3DX_DEFAULT);
  ASSERT_EQ(texture->GetLevelCount(), 3U);
  EXPECT_EQ(Level(*texture, 1), (Pixels{15, 120}));  // at 3/4 and 13/4
  EXPECT_EQ(Level(*texture, 2), Pixels{68});         // 67.5
}

TEST_F(Textures, AreRefusedWithTheReason) {
  const auto with = [](std::string s, std::size_t i, const std::string& sOther) {
    return s.replace(i, sOther.size(), sOther);
  };
  const std::string sPng = Png(300, Pixels(90000)), sJpeg = Encode(Gradient(), "JPG");
  // A Huffman table of 17 symbols of 12 bits more than a byte can name; scans without data.
  const std::string sTable =
      std::string("\xFF\xC4\x01\x24\x00", 5) + std::string(11, '\0') + "\xFF\x12";
  std::string sScans = sJpeg.substr(0, sJpeg.size() - 2);
  for (int i = 0; i < 4; ++i) sScans += sJpeg.substr(sJpeg.find("\xFF\xDA"), 14);
  const std::string sBadJpeg = "Corrupt JPEG (tables or scans)";
  const std::pair<std::string, std::string> files[] = {
      {sPng.substr(0, sPng.size() / 2), "Corrupt PNG"},
      {with(sPng, 18, "\x10"), "the image has more than 4096 pixels on a side"},
      {with(sPng, 16, std::string("\0\0\0\1\0\0\0\1", 8)),
       "it unpacks to more than its pixels need"},
      {"P6 0 0 255\n", "the image is empty"},
      {"P5 2 1 256\nxxxx", "PNM not supported: 16 bits, or numbers out of range"},
      {with(Encode(Gradient(), "BMP"), 22, std::string("\0\0\0\x80", 4)), "Corrupt BMP (height)"},
      {sJpeg.substr(0, 2) + sTable + std::string(276, '\0') + sJpeg.substr(2), sBadJpeg},
      {sScans, sBadJpeg}};
  for (const auto& [sBytes, sWhy] : files) {
    EXPECT_THROW(Read(sBytes), platform::D3DError) << sWhy;
    EXPECT_EQ(sReport, (folder / "image").string() + ": " + sWhy);
  }
}

TEST_F(Textures, OfAModelShareABudgetAndWhatTheyHaveReadAlready) {
  std::filesystem::create_directory(folder / "Maps");
  Write("small.pgm", "P5 1 1 255\nx");
  Write("small2.pgm", "P5 1 1 255\nx");
  Write("Maps/Large.PGM", "P5 4096 4092 255\n" + std::string(4096 * 4092, 'x'));
  const auto large = Load("maps/large.pgm", 1);  // as a system that ignores case finds it
  EXPECT_EQ(Load("maps/large.pgm", 1), large);
  EXPECT_NE(Load("small.pgm"), nullptr);
  EXPECT_THROW(Load("small2.pgm"), platform::D3DError);
  EXPECT_TRUE(
      sReport.ends_with("small2.pgm: the model's images have more than 16777216 pixels in all"));
}

}  // namespace
}  // namespace quillorbit::test
