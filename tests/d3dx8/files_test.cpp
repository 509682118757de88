#include <fstream>
#include <gtest/gtest.h>
#include <random>

#include <QBuffer>
#include <QImage>

#include "fakes/direct3d8.h"
#include "fakes/fonts.h"
#include "platform/d3dx8/library.h"
#include "support/child_process.h"

namespace quillorbit::test {
namespace {

using Pixels = std::vector<std::uint32_t>;  // A8R8G8B8

std::string Encode(const QImage& image, const char* sFormat) {
  QBuffer buffer;
  image.save(&buffer, sFormat);
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

/// Cuts or changes some of the bytes, often those at the beginning.
std::string Damaged(std::string bytes, std::mt19937& random) {
  for (int i = 0; i < 3 && !bytes.empty(); ++i) {
    const unsigned nRange = random() % 2 == 0 ? 64 : 1U << 20;
    const std::size_t nAt = random() % nRange % bytes.size();
    if (random() % 10 == 0)
      bytes.resize(nAt);
    else
      bytes[nAt] = static_cast<char>(random());
  }
  return bytes;
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
    const std::vector<std::byte>& level = texture.levels.at(iLevel);
    const auto* const pFirst = reinterpret_cast<const std::uint32_t*>(level.data());
    return {pFirst, pFirst + level.size() / 4};
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
  for (const char* sFormat : {"BMP", "PPM", "JPG"}) {
    const std::string sBytes = Encode(Gradient(), sFormat);
    const Pixels actual = Read(sBytes, 57, 12);
    const QImage expected = QImage::fromData(QByteArray::fromStdString(sBytes))
                                .scaled(57, 12, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    for (int i = 0; i < 57 * 12; ++i) {
      const QRgb a = actual.at(static_cast<std::size_t>(i)), b = expected.pixel(i % 57, i / 57);
      for (const int nShift : {0, 8, 16, 24})  // each rounds in its own way
        ASSERT_NEAR(a >> nShift & 0xFF, b >> nShift & 0xFF, 5) << sFormat << ' ' << i;
    }
  }
}

TEST_F(Textures, AreResampledFromTheFourNearestPixelsWithoutTheColourKey) {
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
  std::string sScans = sJpeg.substr(0, sJpeg.size() - 2);
  for (int i = 0; i < 4; ++i) sScans += sJpeg.substr(sJpeg.find("\xFF\xDA"), 14);
  const std::pair<std::string, std::string> files[] = {
      {sPng.substr(0, sPng.size() / 2), "Corrupt PNG"},
      {with(sPng, 18, "\x10"), "more than 4096 pixels on a side"},
      {with(sPng, 16, std::string("\0\0\0\1\0\0\0\1", 8)), "more than its pixels need"},
      {"P5 2 1 256\nxxxx", "16 bits"},
      {with(Encode(Gradient(), "BMP"), 22, std::string("\0\0\0\x80", 4)), "height"},
      {sScans, "tables or scans"}};
  for (const auto& [sBytes, sWhy] : files) {
    EXPECT_THROW(Read(sBytes), platform::D3DError) << sWhy;
    EXPECT_TRUE(sReport.starts_with((folder / "image: ").string()) &&
                sReport.find(sWhy) != sReport.npos)
        << sReport;
  }
}

TEST_F(Textures, OfAModelShareABudgetAndWhatTheyHaveReadAlready) {
  Write("small.pgm", "P5 1 1 255\nx");
  Write("Small2.pgm", "P5 1 1 255\nx");
  Write("Large.PGM", "P5 4096 4092 255\n" + std::string(4096 * 4092, 'x'));
  const auto large = Load("large.pgm", 1);  // as a system that ignores case finds it
  EXPECT_EQ(Load("large.pgm", 1), large);
  EXPECT_NE(Load("small.pgm"), nullptr);
  EXPECT_THROW(Load("small2.pgm"), platform::D3DError);
}

TEST_F(Textures, AndModelsComeFromDamagedFilesOrAnErrorDoes) {
  const QImage image(QUILLORBIT_RESOURCES "/phone-front.png");
  std::vector<std::string> seeds = {ReadFile(QUILLORBIT_MODELS "/house.x"),
                                    ReadFile(QUILLORBIT_MODELS "/compressed-binary.x")};
  for (const char* sFormat : {"PNG", "BMP", "PPM", "JPG", "PGM"})
    seeds.push_back(Encode(image.scaled(20, 12), sFormat));
  log.Mute(true);
  std::mt19937 random(8);
  int nRead = 0, nRefused = 0;
  for (const std::string& sSeed : seeds)
    for (int i = 0; i < 1500; ++i) try {
        std::filesystem::remove(folder / "damaged");  // some disks are slow to replace a file
        Write("damaged", Damaged(sSeed, random));
        std::shared_ptr<platform::D3DXBuffer> materials;
        std::int32_t nMaterials = 0;
        if (sSeed.starts_with("xof"))
          (void)d3dx->LoadMeshFromX(folder / "damaged", 0, device, materials, nMaterials);
        else
          (void)Load("damaged", 7, 0, 0);
        ++nRead;
      } catch (const platform::D3DError& e) {
        ++nRefused;
        ASSERT_EQ(sReport, e.what());
        ASSERT_TRUE(sReport.starts_with((folder / "damaged: ").string())) << sReport;
      }
  EXPECT_GT(nRead, 500);
  EXPECT_GT(nRefused, 500);
}

}  // namespace
}  // namespace quillorbit::test
