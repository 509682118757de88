#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

#include <QImage>

#include "fakes/direct3d8.h"
#include "platform/d3dx8/mesh.h"
#include "platform/d3dx8/texture.h"
#include "support/child_process.h"

namespace quillorbit::test {
namespace {

/// Changes, cuts, doubles or removes some of the bytes.
std::string Damaged(std::string bytes, std::mt19937& random) {
  constexpr unsigned char telling[] = {0x00, 0x01, 0x7F, 0x80, '{', '}', '"', '9', 0xFF};
  for (std::size_t nChanges = 1 + random() % 6; nChanges > 0 && !bytes.empty(); --nChanges) {
    const std::size_t i =
        random() % (random() % 2 == 0 ? std::min<std::size_t>(bytes.size(), 64) : bytes.size());
    const std::size_t nKind = random() % 10, n = random() % 32;
    if (nKind == 0) bytes.resize(i);
    if (nKind == 1) bytes.erase(i, n);
    if (nKind == 2) bytes.insert(i, bytes.substr(random() % bytes.size(), n));
    if (nKind > 2 && i < bytes.size())
      bytes[i] = static_cast<char>(nKind < 6 ? telling[n % std::size(telling)] : random());
  }
  return bytes;
}

TEST(DamagedFiles, EndAsAModelOrTextureOrAsAnError) {
  const std::string sModels = QUILLORBIT_MODELS "/", sResources = QUILLORBIT_RESOURCES "/";
  const TemporaryFolder folder;
  std::vector<std::string> seeds = {
      sModels + "house.x", sModels + "compressed-text.x", sModels + "compressed-binary.x",
      sModels + "compressed-binary-64.x", sResources + "phone-front.png"};
  for (const char* sFormat : {"bmp", "ppm", "jpg", "pgm"}) {
    seeds.push_back(folder / (std::string("phone.") + sFormat));
    ASSERT_TRUE(QImage(QString::fromStdString(seeds[4]))
                    .scaled(20, 12)
                    .save(QString::fromStdString(seeds.back())));
  }
  fakes::CallLog log;
  log.Mute(true);
  const auto device = std::make_shared<fakes::FakeDirect3DDevice>(log);
  std::mt19937 random(8);
  for (const std::string& sSeed : seeds) {
    const std::string sBytes = ReadFile(sSeed), sFile = folder / "damaged";
    int nRead = 0;
    constexpr int nRounds = 1500;
    for (int i = 0; i < nRounds; ++i) {
      std::filesystem::remove(sFile);  // some disks write at once what takes the place of a file
      std::ofstream(sFile, std::ios::binary) << Damaged(sBytes, random);
      try {
        if (sSeed.ends_with(".x")) {
          std::shared_ptr<platform::D3DXBuffer> materials;
          std::int32_t nMaterials = 0;
          ASSERT_GT(d3dx8::LoadMeshFromX(sFile, 0, device, materials, nMaterials)->GetNumFaces(),
                    0U);
        } else {
          d3dx8::ImageBudget budget;
          const auto texture =
              d3dx8::CreateTextureFromFileEx(device, sFile, 7, 0, 0, 0, platform::D3DFMT_UNKNOWN,
                                             platform::D3DPOOL_MANAGED, 3, 3, 0, budget);
          ASSERT_EQ(dynamic_cast<const fakes::FakeTexture&>(*texture).nWidth, 7U);
        }
        ++nRead;
      } catch (const platform::D3DError& e) {
        ASSERT_EQ(e.lNumber, platform::D3DXERR_INVALIDDATA);
        ASSERT_TRUE(std::string(e.what()).starts_with(sFile + ": ")) << e.what();
      }
    }
    EXPECT_TRUE(nRead > 0 && nRead < nRounds) << sSeed;
  }
}

}  // namespace
}  // namespace quillorbit::test
