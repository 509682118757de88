#include "platform/d3dx8/texture.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <zlib.h>

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

QImage ToImage(int nWidth, const Pixels& pixels) {
  return QImage(reinterpret_cast<const uchar*>(pixels.data()), nWidth,
                static_cast<int>(pixels.size()) / nWidth, QImage::Format_ARGB32)
      .copy();
}

/// Smooth, and different in every direction and channel.
QImage Gradient() {
  QImage image(40, 24, QImage::Format_RGB32);
  for (int i = 0; i < 40 * 24; ++i)
    image.setPixel(i % 40, i / 40, qRgb(i % 40 * 6, i / 40 * 10, 200 - (i % 40 + i / 20) * 2));
  return image;
}

std::string Encode(const QImage& image, const char* sFormat, bool bProgressive = false) {
  QBuffer buffer;
  QImageWriter writer(&buffer, sFormat);
  writer.setProgressiveScanWrite(bProgressive);
  writer.setQuality(95);
  writer.write(image);
  return buffer.data().toStdString();
}

struct Options {
  std::uint32_t nWidth = 0, nHeight = 0, nLevels = 1, nFilter = 3;
  platform::D3DCOLOR key = 0;
  platform::D3DFORMAT eFormat = platform::D3DFMT_UNKNOWN;
};

struct Textures : testing::Test {
  std::shared_ptr<fakes::FakeTexture> Load(const std::string& sName, const Options& o) {
    return std::dynamic_pointer_cast<fakes::FakeTexture>(d3dx8::CreateTextureFromFileEx(
        device, folder / sName, o.nWidth, o.nHeight, o.nLevels, 0, o.eFormat,
        platform::D3DPOOL_MANAGED, o.nFilter, 3, o.key, budget));
  }
  std::shared_ptr<fakes::FakeTexture> Read(const std::string& sBytes, const Options& o = {}) {
    Write("image", sBytes);
    return Load("image", o);
  }
  void Write(const std::string& sName, const std::string& sBytes) {
    std::ofstream(folder / sName, std::ios::binary) << sBytes;
  }
  static Pixels Level(const fakes::FakeTexture& texture, std::uint32_t iLevel = 0) {
    Pixels pixels(texture.levels.at(iLevel).size() / 4);
    std::memcpy(pixels.data(), texture.levels[iLevel].data(), texture.levels[iLevel].size());
    return pixels;
  }
  /// Why a file is refused.
  std::string Refusal(const std::string& sBytes, const Options& o = {}) {
    try {
      Read(sBytes, o);
    } catch (const platform::D3DError& e) {
      if (e.lNumber == platform::D3DERR_INVALIDCALL) return "a wrong call";
      const std::string sWhy = e.what(), sFile = (folder / "image").string() + ": ";
      return sWhy.starts_with(sFile) ? sWhy.substr(sFile.size()) : sWhy;
    }
    return "it is read";
  }

  TemporaryFolder folder;
  fakes::CallLog log;
  std::shared_ptr<fakes::FakeDirect3DDevice> device =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  d3dx8::ImageBudget budget;
};

TEST_F(Textures, AreWhatAnotherLibraryReadsInEveryKindOfFile) {
  const Pixels pixels = {0x80FF0000, 0x0000FF00, 0xFF0000FF, 0xFF123456, 0x01FFFFFF, 0xFF000000};
  EXPECT_EQ(Level(*Read(Encode(ToImage(3, pixels), "PNG"))), pixels);
  EXPECT_EQ(log.Take(), std::vector<std::string>{"CreateTexture 3, 2, 1, 0, 21, 1"});
  std::string sTga(18, '\0');  // 32 bits from the top down
  for (const auto& [i, n] : {std::pair{2, 2}, {12, 3}, {14, 2}, {16, 32}, {17, 0x28}})
    sTga[static_cast<std::size_t>(i)] = static_cast<char>(n);
  sTga.append(reinterpret_cast<const char*>(pixels.data()), 24);
  EXPECT_EQ(Level(*Read(sTga)), pixels);

  for (const auto& [sFormat, bProgressive] :
       {std::pair{"BMP", false}, {"PPM", false}, {"JPG", false}, {"JPG", true}}) {
    const std::string sBytes = Encode(Gradient(), sFormat, bProgressive);
    const QImage expected = QImage::fromData(QByteArray::fromStdString(sBytes));
    // As they are, and in other sizes. Each library rounds in its own way.
    for (const QSize size : {QSize(40, 24), QSize(20, 12), QSize(80, 48), QSize(57, 31)}) {
      const QImage scaled = expected.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
      const Pixels actual =
          Level(*Read(sBytes, {.nWidth = static_cast<std::uint32_t>(size.width()),
                               .nHeight = static_cast<std::uint32_t>(size.height())}));
      for (int i = 0; i < size.width() * size.height(); ++i) {
        const QRgb a = actual.at(static_cast<std::size_t>(i));
        const QRgb b = scaled.pixel(i % size.width(), i / size.width());
        ASSERT_LE(std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                            std::abs(qBlue(a) - qBlue(b)), qAlpha(b) - qAlpha(a)}),
                  5)
            << sFormat << ' ' << size.width() << ' ' << i;
      }
    }
  }
}

TEST_F(Textures, AreResampledFromTheFourNearestPixelsWithoutTheColourKey) {
  const auto resampled = [&](int nFrom, const Pixels& pixels, const Options& o) {
    return Level(*Read(Encode(ToImage(nFrom, pixels), "PNG"), o));
  };
  // In both directions at once: a quarter and three quarters of the way each.
  EXPECT_EQ(resampled(2, {0x00, 0x40, 0x80, 0xC0}, {.nWidth = 4, .nHeight = 4}),
            (Pixels{0x00, 0x10, 0x30, 0x40, 0x20, 0x30, 0x50, 0x60, 0x60, 0x70, 0x90, 0xA0, 0x80,
                    0x90, 0xB0, 0xC0}));
  // Two of three: at 1/4 and 7/4. One of 2 x 2 is their mean, 10.5, rounded up.
  EXPECT_EQ(resampled(3, {0xFF000000, 0xFF000064, 0xFF0000C8}, {.nWidth = 2}),
            (Pixels{0xFF000019, 0xFF0000AF}));
  EXPECT_EQ(resampled(2, {4, 8, 12, 18}, {.nWidth = 1, .nHeight = 1}), Pixels{11});
  EXPECT_EQ(resampled(4, {0xFF00FF00, 0xFF0000C8, 0xFE00FF00, 0xFE00FF00},
                      {.nWidth = 2, .key = 0xFF00FF00}),
            (Pixels{0x80000064, 0xFE00FF00}));

  const auto texture = Read(Encode(ToImage(5, {0, 20, 80, 100, 180, 0, 20, 80, 100, 180}), "PNG"),
                            {.nLevels = platform::D3DX_DEFAULT});
  ASSERT_EQ(texture->GetLevelCount(), 3U);
  EXPECT_EQ(Level(*texture, 1), (Pixels{15, 120}));  // at 3/4 and 13/4
  EXPECT_EQ(Level(*texture, 2), Pixels{68});
}

/// A grey PNG of one pixel whose compressed data are so many zeros.
std::string PngOfZeros(int nZeros) {
  const auto chunk = [](const std::string& s) {
    const auto number = [](std::size_t n) {
      const auto byte = [n](unsigned nShift) { return static_cast<char>(n >> nShift); };
      return std::string{byte(24), byte(16), byte(8), byte(0)};
    };
    const auto* p = reinterpret_cast<const Bytef*>(s.data());
    return number(s.size() - 4) + s + number(crc32(0, p, static_cast<uInt>(s.size())));
  };
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR" + std::string("\0\0\0\1\0\0\0\1\x08\0\0\0\0", 13)) +
         chunk("IDAT" + qCompress(QByteArray(nZeros, '\0')).mid(4).toStdString()) + chunk("IEND");
}

TEST_F(Textures, AreRefusedWithTheReason) {
  const std::string sPng = Encode(Gradient(), "PNG"), sJpeg = Encode(Gradient(), "JPG");
  for (const Options& o :
       {Options{.nWidth = 4097}, {.nFilter = 1}, {.eFormat = platform::D3DFMT_D16}})
    EXPECT_EQ(Refusal(sPng, o), "a wrong call");
  // A Huffman table of 17 symbols of 12 bits more than a byte can name.
  std::string sTable("\xFF\xC4\x01\x24\x00", 5);
  sTable += std::string(11, '\0') + '\xFF' + '\x12' + std::string(276, '\0');
  std::string sScans = sJpeg.substr(0, sJpeg.size() - 2);
  for (int i = 0; i < 4; ++i) sScans += sJpeg.substr(sJpeg.find("\xFF\xDA"), 14);
  std::string sBmp = Encode(Gradient(), "BMP");
  sBmp.replace(22, 4, std::string("\0\0\0\x80", 4));
  std::string sHuge = sPng;
  sHuge[18] = 0x10;
  const std::string sUnsafePnm = "PNM not supported: 16 bits, or numbers out of range";
  const std::pair<std::string, std::string> files[] = {
      {"a text\n", "Image not of any known type, or corrupt"},
      {sPng.substr(0, sPng.size() / 2), "Corrupt PNG"},
      {sHuge, "the image has more than 4096 pixels on a side"},
      {PngOfZeros(200000), "it unpacks to more than its pixels need"},
      {"P6 0 0 255\n", "the image is empty"},
      {"P5 2 1 256\nxxxx", sUnsafePnm},
      {"P5 #12\n4294967297 1 255\nx", sUnsafePnm},
      {sBmp, "Corrupt BMP (height)"},
      {sJpeg.substr(0, 2) + sTable + sJpeg.substr(2), "Corrupt JPEG (tables or scans)"},
      {sScans, "Corrupt JPEG (tables or scans)"}};
  for (const auto& [sBytes, sWhy] : files) EXPECT_EQ(Refusal(sBytes), sWhy);
  EXPECT_EQ(Level(*Read("P5 #4294967297\n1 1 0255\nx"))[0], 0xFF787878);
}

struct Library : d3dx8::Library {
  using d3dx8::Library::Library;
  std::shared_ptr<platform::DirectX8> NewDirectX8() override { return nullptr; }
};

TEST_F(Textures, OfAModelShareABudgetAndAFileThatIsNamedAgain) {
  fakes::FakeFonts fonts(log);
  std::vector<std::string> reports;
  const auto d3dx = Library(fonts, [&](const char* s) { reports.emplace_back(s); }).NewD3DX8();
  const auto load = [&](const std::string& sName) {
    return d3dx->CreateTextureFromFileEx(device, folder / sName, 128, 128, 0, 0,
                                         platform::D3DFMT_UNKNOWN, platform::D3DPOOL_MANAGED, 3, 3,
                                         0);
  };
  std::filesystem::create_directory(folder / "Maps");
  Write("Maps/Large.PGM", "P5 4096 4092 255\n" + std::string(4096 * 4092, 'x'));
  Write("small.pgm", "P5 1 1 255\nx");
  Write("small2.pgm", "P5 1 1 255\nx");
  const auto large = load("maps/large.pgm");  // as a system without case would find it
  EXPECT_EQ(load("maps/large.pgm"), large);
  EXPECT_NO_THROW(load("small.pgm"));
  EXPECT_THROW(load("small2.pgm"), platform::D3DError);
  EXPECT_EQ(reports,
            std::vector<std::string>{(folder / "small2.pgm").string() +
                                     ": the model's images have more than 16777216 pixels in all"});
}

}  // namespace
}  // namespace quillorbit::test
