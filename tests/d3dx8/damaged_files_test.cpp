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

/// Changes, cuts, doubles or removes some of the bytes, often those at the beginning.
std::string Damaged(std::string bytes, std::mt19937& random) {
  constexpr unsigned char telling[] = {0x00, 0x01, 0x7F, 0x80, '{', '}', '"', '9', 0xFF};
  for (std::size_t nChanges = 1 + random() % 6; nChanges > 0 && !bytes.empty(); --nChanges) {
    const std::size_t i = random() % 2 * 64 < bytes.size() ? random() % 64 : random();
    std::string sPiece = bytes.substr(random() % bytes.size(), random() % 32);
    const std::size_t nKind = random() % 10, nAt = i % bytes.size();
    if (nKind > 2) sPiece.assign(1, static_cast<char>(nKind < 6 ? telling[i % 9] : random()));
    bytes.replace(nAt, nKind == 1 ? 0 : sPiece.size(), nKind == 2 ? "" : sPiece);
    if (nKind == 0) bytes.resize(nAt);
  }
  return bytes;
}

TEST(DamagedFiles, EndAsAModelOrTextureOrAsAnError) {
  const TemporaryFolder folder;
  std::vector<std::string> seeds = {QUILLORBIT_RESOURCES "/phone-front.png"};
  for (const char* sModel : {"house", "compressed-text", "compressed-binary"})
    seeds.push_back(std::string(QUILLORBIT_MODELS "/") + sModel + ".x");
  for (const char* sFormat : {"bmp", "ppm", "jpg", "pgm"}) {
    seeds.push_back(folder / (std::string("phone.") + sFormat));
    QImage(seeds[0].c_str()).scaled(20, 12).save(seeds.back().c_str());
  }
  fakes::CallLog log;
  log.Mute(true);
  const auto device = std::make_shared<fakes::FakeDirect3DDevice>(log);
  std::mt19937 random(8);
  for (const std::string& sSeed : seeds) {
    const std::string sBytes = ReadFile(sSeed), sFile = folder / "damaged";
    constexpr int nRounds = 1500;
    int nRead = 0;
    for (int i = 0; i < nRounds; ++i) try {
        std::filesystem::remove(sFile);  // some disks write at once what takes a file's place
        std::ofstream(sFile, std::ios::binary) << Damaged(sBytes, random);
        std::shared_ptr<platform::D3DXBuffer> materials;
        std::int32_t nMaterials = 0;
        d3dx8::ImageBudget budget;
        if (sSeed.ends_with(".x"))
          (void)d3dx8::LoadMeshFromX(sFile, 0, device, materials, nMaterials);
        else
          (void)d3dx8::CreateTextureFromFileEx(device, sFile, 7, 0, 0, 0, platform::D3DFMT_UNKNOWN,
                                               platform::D3DPOOL_MANAGED, 3, 3, 0, budget);
        ++nRead;
      } catch (const platform::D3DError& e) {
        ASSERT_EQ(e.lNumber, platform::D3DXERR_INVALIDDATA);
        ASSERT_TRUE(std::string(e.what()).starts_with(sFile + ": ")) << e.what();
      }
    EXPECT_TRUE(nRead > 0 && nRead < nRounds) << sSeed;
  }
}

}  // namespace
}  // namespace quillorbit::test
