#include <chrono>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

#include <sys/resource.h>

#include "d3dx8/x_samples.h"

// Model files come from other people. Whatever is in one, it becomes a mesh or is refused.

namespace quillorbit::test {
namespace {

class Mutator {
 public:
  explicit Mutator(unsigned nSeed) : m_random(nSeed) {}

  std::size_t Up(std::size_t nLimit) { return m_random() % nLimit; }

  /// Spoils the bytes behind the 16 first ones, and those seldom.
  void Mutate(std::string& s, const std::string& sOther) {
    const std::size_t nBegin = Up(50) == 0 ? 0 : std::min<std::size_t>(16, s.size() - 1);
    const std::size_t i = nBegin + Up(s.size() - nBegin);
    const std::size_t nLength = 1 + Up(Up(4) == 0 ? 200 : 8);
    switch (Up(7)) {
      case 0:
        s[i] = static_cast<char>(Up(256));
        break;
      case 1:
        s[i] = static_cast<char>(s[i] ^ 1 << Up(8));
        break;
      case 2:
        s.erase(i, nLength);
        break;
      case 3:
        s.insert(i, s.substr(nBegin + Up(s.size() - nBegin), nLength));
        break;
      case 4:
        s.replace(i, nLength, sOther.substr(Up(sOther.size()), nLength));
        break;
      case 5: {
        const std::string& sPiece = m_pieces[Up(m_pieces.size())];
        s.replace(i, Up(2) == 0 ? 0 : sPiece.size(), sPiece);
        break;
      }
      default:
        if (Up(20) == 0) s.resize(i + 1);
    }
    if (s.empty()) s = " ";
  }

 private:
  std::mt19937 m_random;
  const std::vector<std::string> m_pieces = {"{",
                                             "}",
                                             "{Red}",
                                             "{Wall}",
                                             "{Flag}",
                                             ";",
                                             "\"",
                                             "<",
                                             "//",
                                             "#",
                                             "0",
                                             "1",
                                             "-1",
                                             "4294967295",
                                             "1e18",
                                             "-1e18",
                                             "1e-300",
                                             "1e19",
                                             "nan",
                                             "Mesh {",
                                             "Frame {",
                                             "Frame {}",
                                             "Material {",
                                             "template a {",
                                             std::string("\0\0\0\0", 4),
                                             "\xFF\xFF\xFF\xFF",
                                             std::string("\x0A\0", 2),
                                             std::string("\x0B\0", 2),
                                             std::string("\x06\0\1\0\0\0", 6),
                                             std::string("\x07\0\1\0\0\0\0\0\xC0\x7F", 10),
                                             std::string("\0\0\x80\x3F", 4)};
};

/// Checks a mesh, the whole of it, as a device would use it.
void ExpectSound(LoadedMesh& loaded) {
  unsigned nFaces = 0;
  for (std::uint32_t i = 0; i <= static_cast<std::uint32_t>(loaded.lMaterials); ++i) {
    const auto calls = loaded.Draw(i);
    if (calls.empty()) continue;
    unsigned nMin = 0, nVertices = 0, nFirst = 0, nCount = 0;
    ASSERT_EQ(std::sscanf(calls.at(3).c_str(), "DrawIndexedPrimitive 4, %u, %u, %u, %u", &nMin,
                          &nVertices, &nFirst, &nCount),
              4);
    ASSERT_EQ(nFirst, 3 * nFaces);
    nFaces += nCount;
    ASSERT_LE(nMin + nVertices, loaded.mesh->GetNumVertices());
    const auto indexes = loaded.Indexes();
    for (std::size_t j = nFirst; j < nFirst + 3 * nCount; ++j) {
      ASSERT_GE(indexes.at(j), nMin);
      ASSERT_LT(indexes.at(j), nMin + nVertices);
    }
  }
  ASSERT_EQ(nFaces, loaded.mesh->GetNumFaces());
  ASSERT_GT(nFaces, 0U);
  const auto vertices = loaded.Vertices();
  ASSERT_EQ(vertices.size(), loaded.mesh->GetNumVertices());
  for (const Vertex& p : vertices)
    for (const float f : {p.x, p.y, p.z, p.nx, p.ny, p.nz, p.u, p.v}) ASSERT_LE(std::abs(f), 1e18F);
}

/// The most memory that this process has ever had, in MiB.
long PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(XFuzz, ADamagedFileIsAMeshOrARefusal) {
  const std::vector<std::string> samples = {sHouse, ToBinary(sHouse), ToBinary(sHouse, 8),
                                            Compress(sHouse), Compress(ToBinary(sHouse))};
  const char* const pRounds = std::getenv("QUILLORBIT_FUZZ_ROUNDS");
  const long nRounds = pRounds != nullptr ? std::strtol(pRounds, nullptr, 10) : 6000;
  LoadedMesh loaded(sHouse);
  Mutator mutator(1);
  const long nPeakBefore = PeakMemory();
  long nMeshes = 0;
  for (long iRound = 0; iRound < nRounds; ++iRound) {
    std::string s = samples[mutator.Up(samples.size())];
    for (std::size_t n = 1 + mutator.Up(4); n > 0; --n)
      mutator.Mutate(s, samples[mutator.Up(samples.size())]);
    // Half of the texts and binary files are then compressed, so that the damage gets through.
    if (s.size() > 16 && s[11] == ' ' && mutator.Up(2) == 0) s = Compress(s);
    loaded.Write(s);
    SCOPED_TRACE(iRound);
    const auto begin = std::chrono::steady_clock::now();
    try {
      loaded.Load(0);
      ++nMeshes;
      ASSERT_NO_FATAL_FAILURE(ExpectSound(loaded));
    } catch (const platform::D3DError& e) {
      ASSERT_EQ(e.lNumber, platform::D3DXERR_INVALIDDATA);
    }
    ASSERT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  }
  EXPECT_LT(PeakMemory() - nPeakBefore, 512);
  // Neither do all get through, nor none.
  EXPECT_GT(nMeshes, nRounds / 50);
  EXPECT_LT(nMeshes, nRounds - nRounds / 10);
  std::printf("%ld of %ld files became meshes\n", nMeshes, nRounds);
}

}  // namespace
}  // namespace quillorbit::test
