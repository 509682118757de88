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

/// Cuts, removes, repeats or changes some of the bytes, often those at the beginning.
std::string Damaged(std::string bytes, std::mt19937& random) {
  constexpr unsigned char telling[] = {0x00, 0x01, 0x7F, 0x80, '{', '}', '"', '9', 0xFF};
  for (std::size_t nChanges = 1 + random() % 6; nChanges > 0 && !bytes.empty(); --nChanges) {
    const std::size_t nKind = random() % 10,
                      nAt = random() % (random() % 2 == 0 ? 64 : 1U << 20) % bytes.size();
    if (nKind == 0)
      bytes.resize(nAt);
    else if (nKind == 1)
      bytes.erase(nAt, random() % 32);
    else if (nKind == 2)
      bytes.insert(nAt, bytes.substr(random() % bytes.size(), random() % 32));
    else
      bytes[nAt] = static_cast<char>(nKind < 6 ? telling[random() % 9] : random());
  }
  return bytes;
}

TEST(DamagedFiles, EndAsAModelOrTextureOrAsAnError) {
  const TemporaryFolder folder;
  std::vector<std::string> seeds = {QUILLORBIT_RESOURCES "/phone-front.png"};
  for (const char* sModel : {"house", "compressed-binary"})
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
        ASSERT_TRUE(std::string(e.what()).starts_with(sFile + ": ")) << e.what();
      }
    EXPECT_TRUE(nRead > 0 && nRead < nRounds) << sSeed;
  }
}

}  // namespace
}  // namespace quillorbit::test
