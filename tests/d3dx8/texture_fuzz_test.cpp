#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "d3dx8/image_files.h"
#include "fakes/direct3d8.h"
#include "platform/d3dx8/texture.h"
#include "support/child_process.h"

namespace quillorbit::d3dx8_tests {
namespace {

using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t n) { return random() % n; }

/// Changes, cuts, doubles or removes some of the bytes.
std::string Mutated(std::string bytes, Random& random) {
  constexpr unsigned char telling[] = {0x00, 0x01, 0x7F, 0x80, 0xC4, 0xDA, 0xFE, 0xFF};
  for (std::size_t nChanges = 1 + Below(random, 6); nChanges > 0 && !bytes.empty(); --nChanges) {
    // Often among the first bytes, where the headers are.
    const std::size_t nRange =
        Below(random, 2) == 0 ? std::min<std::size_t>(bytes.size(), 64) : bytes.size();
    const std::size_t i = Below(random, nRange), n = Below(random, 32);
    switch (Below(random, 12)) {
      case 0:
        bytes.resize(i);
        break;
      case 1:
        bytes.erase(i, n);
        break;
      case 2:
        bytes.insert(i, bytes.substr(Below(random, bytes.size()), n));
        break;
      case 3:
      case 4:
      case 5:
        bytes[i] = static_cast<char>(telling[Below(random, std::size(telling))]);
        break;
      default:
        bytes[i] = static_cast<char>(random());
    }
  }
  return bytes;
}

std::size_t Rounds() {
  const char* sRounds = std::getenv("QUILLORBIT_FUZZ_ROUNDS");
  return sRounds == nullptr ? 20000 : std::strtoul(sRounds, nullptr, 10);
}

TEST(TextureFuzzing, EndsWithATextureOrAnError) {
  const QImage image = Gradient(20, 12);
  const QImage alpha = image.convertToFormat(QImage::Format_ARGB32);
  const std::vector<std::string> seeds = {
      Encode(alpha, "PNG"),     Encode(image.convertToFormat(QImage::Format_Indexed8), "PNG"),
      Encode(image, "BMP"),     Encode(image.convertToFormat(QImage::Format_Indexed8), "BMP"),
      Tga(20, ToPixels(image)), Jpeg(image, false),
      Jpeg(image, true),        Encode(image, "PPM")};
  const test::TemporaryFolder folder;
  const std::string sFile = folder / "image";
  fakes::CallLog log;
  log.Mute(true);
  const auto device = std::make_shared<fakes::FakeDirect3DDevice>(log);

  Random random(8);
  std::size_t nTextures = 0, nErrors = 0;
  for (std::size_t i = 0; i < Rounds(); ++i) {
    const std::string bytes = Mutated(seeds[i % seeds.size()], random);
    std::filesystem::remove(sFile);  // some disks write at once what takes the place of a file
    std::ofstream(sFile, std::ios::binary) << bytes;
    const std::uint32_t nWidth = i / seeds.size() % 2 == 0 ? 7 : 0;
    try {
      const auto texture = d3dx8::CreateTextureFromFileEx(
          device, sFile, nWidth, 0, 1, 0, platform::D3DFMT_UNKNOWN, platform::D3DPOOL_MANAGED,
          platform::D3DX_FILTER_LINEAR, platform::D3DX_FILTER_LINEAR, 0);
      const auto& made = dynamic_cast<const fakes::FakeTexture&>(*texture);
      ASSERT_TRUE(nWidth == 7 ? made.nWidth == 7 : made.nWidth >= 1 && made.nWidth <= 4096);
      ASSERT_TRUE(made.nHeight >= 1 && made.nHeight <= 4096);
      ++nTextures;
    } catch (const platform::D3DError& e) {
      ASSERT_EQ(e.lNumber, platform::D3DXERR_INVALIDDATA);
      ASSERT_GT(std::string_view(e.what()).size(), sFile.size() + 2);
      ++nErrors;
    }
  }
  EXPECT_GT(nTextures, Rounds() / 10);
  EXPECT_GT(nErrors, Rounds() / 10);
}

}  // namespace
}  // namespace quillorbit::d3dx8_tests
