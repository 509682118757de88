#include <array>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

#include "d3dx8/x_samples.h"

// Models made at random, compared with what another library reads.

namespace quillorbit::test {
namespace {

class RandomModel {
 public:
  explicit RandomModel(unsigned nSeed) : m_random(nSeed) {
    m_s = "xof 0303txt 0032\n" + Material("Shared");
    for (int i = 0; i < 2; ++i) Frame(3);  // two, or meshes outside would become part of the one
    Mesh();
  }
  std::string Text() const { return m_s; }

 private:
  std::uint32_t Up(std::uint32_t nLimit) { return static_cast<std::uint32_t>(m_random() % nLimit); }
  std::string Number() {
    return std::to_string((static_cast<int>(Up(8001)) - 4000) / 1000.0) + ";";
  }
  std::string Numbers(std::size_t n) {
    std::string s;
    for (; n > 0; --n) s += Number();
    return s;
  }

  void Frame(int nDepth) {
    m_s += "Frame F" + std::to_string(m_nNames++) + " {\n";
    if (Up(4) > 0) m_s += Matrix();
    for (std::uint32_t i = Up(3); i > 0; --i) Mesh();
    if (nDepth > 0) Frame(nDepth - 1);
    m_s += "}\n";
  }
  /// A matrix that does not mirror.
  std::string Matrix() {
    std::array<double, 9> m;
    const auto minor = [&](std::size_t j) {
      return m[3 + (j + 1) % 3] * m[6 + (j + 2) % 3] - m[3 + (j + 2) % 3] * m[6 + (j + 1) % 3];
    };
    do
      for (double& d : m) d = (static_cast<int>(Up(401)) - 200) / 100.0;
    while (m[0] * minor(0) + m[1] * minor(1) + m[2] * minor(2) < 0.5);
    std::string s = "FrameTransformMatrix { ";
    for (std::size_t i = 0; i < 9; ++i) s += std::to_string(m[i]) + (i % 3 == 2 ? ",0.0," : ",");
    return s + Numbers(3) + "1.0;; }\n";
  }
  void Mesh() {
    const std::uint32_t nPositions = 6 + Up(6), nFaces = 1 + Up(8), nNormals = 1 + Up(4);
    std::string sFaces = std::to_string(nFaces) + ";", sNormalFaces = sFaces, sMaterials;
    for (std::uint32_t i = 0; i < nFaces; ++i) {
      const std::uint32_t nCorners = 3 + Up(4), iFirst = Up(nPositions);
      sFaces += std::to_string(nCorners) + ";";
      sNormalFaces += std::to_string(nCorners) + ";";
      for (std::uint32_t j = 0; j < nCorners; ++j) {
        sFaces += std::to_string((iFirst + j) % nPositions) + ",";
        sNormalFaces += std::to_string(Up(nNormals)) + ",";
      }
      sMaterials += std::to_string(Up(3)) + ",";
    }
    m_s += "Mesh { " + std::to_string(nPositions) + ";" + Numbers(std::size_t{3} * nPositions) +
           sFaces + "\nMeshNormals { " + std::to_string(nNormals) + ";" +
           Numbers(std::size_t{3} * nNormals) + sNormalFaces + "}\nMeshTextureCoords { " +
           std::to_string(nPositions) + ";" + Numbers(std::size_t{2} * nPositions) +
           "}\nMeshMaterialList { 3; " + std::to_string(nFaces) + ";" + sMaterials +
           "{ Shared }\n" + Material("") + Material("") + "} }\n";
  }
  /// Each has a name: the other library takes the number of the line for one. It also finds a
  /// reference only at the place where the material is in the scene; so it is the first of both.
  std::string Material(const std::string& sName) {
    const std::string sOwnName = "M" + std::to_string(m_nNames);
    return "Material " + (sName.empty() ? sOwnName : sName) + " { " + Numbers(11) +
           " TextureFilename { \"t" + std::to_string(m_nNames++) + ".bmp\"; } }\n";
  }

  std::mt19937 m_random;
  std::string m_s;
  int m_nNames = 0;
};

/// A triangle as a list of numbers: its corners, and its material's diffuse colour and power.
struct Triangle {
  std::vector<float> values;
  std::string sTexture;
  bool Matches(const Triangle& other) const {
    return sTexture == other.sTexture &&
           std::equal(values.begin(), values.end(), other.values.begin(), other.values.end(),
                      [](float a, float b) {
                        return std::abs(a - b) <= 1e-5F * std::max(1.0F, std::abs(a));
                      });
  }
};

std::vector<Triangle> TrianglesOf(LoadedMesh& loaded) {
  std::vector<Triangle> triangles;
  for (std::int32_t i = 0; i < loaded.lMaterials; ++i) {
    const auto calls = loaded.Draw(static_cast<std::uint32_t>(i));
    if (calls.empty()) continue;
    const auto vertices = loaded.Vertices();
    const auto indexes = loaded.Indexes();
    unsigned nFirst = 0, nCount = 0;
    std::sscanf(calls[3].c_str(), "DrawIndexedPrimitive 4, %*u, %*u, %u, %u", &nFirst, &nCount);
    const auto m = d3dx8::BufferGetMaterial(*loaded.materials, i);
    for (unsigned t = 0; t < nCount; ++t) {
      Triangle triangle{{}, d3dx8::BufferGetTextureName(*loaded.materials, i)};
      for (unsigned j = 0; j < 3; ++j) {
        const Vertex& p = vertices.at(indexes.at(nFirst + 3 * t + j));
        for (const float f : {p.x, p.y, p.z, p.nx, p.ny, p.nz, p.u, p.v})
          triangle.values.push_back(f);
      }
      for (const float f :
           {m.Diffuse.r, m.Diffuse.g, m.Diffuse.b, m.Power, m.Specular.g, m.Emissive.b})
        triangle.values.push_back(f);
      triangles.push_back(triangle);
    }
  }
  return triangles;
}

/// The other library makes everything right-handed: z is turned round, the order of corners too,
/// and v.
std::vector<Triangle> TrianglesOf(const aiScene& scene) {
  std::vector<Triangle> triangles;
  for (unsigned iMesh = 0; iMesh < scene.mNumMeshes; ++iMesh) {
    const aiMesh& mesh = *scene.mMeshes[iMesh];
    const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
    aiColor3D diffuse, specular, emissive;
    float fPower = 0;
    aiString texture;
    material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
    material.Get(AI_MATKEY_COLOR_SPECULAR, specular);
    material.Get(AI_MATKEY_COLOR_EMISSIVE, emissive);
    material.Get(AI_MATKEY_SHININESS, fPower);
    material.GetTexture(aiTextureType_DIFFUSE, 0, &texture);
    for (unsigned iFace = 0; iFace < mesh.mNumFaces; ++iFace) {
      const aiFace& face = mesh.mFaces[iFace];
      const unsigned n = face.mNumIndices;
      for (unsigned i = 2; i < n; ++i) {
        Triangle triangle{{}, texture.C_Str()};
        for (const unsigned j : {n - 1, n - i, n - 1 - i}) {
          const unsigned k = face.mIndices[j];
          const aiVector3D &p = mesh.mVertices[k], &q = mesh.mNormals[k],
                           &t = mesh.mTextureCoords[0][k];
          for (const float f : {p.x, p.y, -p.z, q.x, q.y, -q.z, t.x, 1 - t.y})
            triangle.values.push_back(f);
        }
        for (const float f : {diffuse.r, diffuse.g, diffuse.b, fPower, specular.g, emissive.b})
          triangle.values.push_back(f);
        triangles.push_back(triangle);
      }
    }
  }
  return triangles;
}

void ExpectSameModel(const std::string& sBytes) {
  LoadedMesh loaded(sBytes);
  std::vector<Triangle> ours = TrianglesOf(loaded);
  Assimp::Importer importer;
  const aiScene* pScene =
      importer.ReadFile(loaded.folder / "model.x", aiProcess_PreTransformVertices);
  ASSERT_NE(pScene, nullptr) << importer.GetErrorString();
  const std::vector<Triangle> theirs = TrianglesOf(*pScene);
  EXPECT_EQ(ours.size(), loaded.mesh->GetNumFaces());
  ASSERT_EQ(ours.size(), theirs.size());
  for (const Triangle& triangle : theirs) {
    const auto i = std::find_if(ours.begin(), ours.end(),
                                [&](const Triangle& t) { return t.Matches(triangle); });
    ASSERT_NE(i, ours.end());
    ours.erase(i);
  }
}

TEST(MeshRandom, AModelIsWhatAnotherLibraryReads) {
  for (unsigned nSeed = 0; nSeed < 40; ++nSeed) {
    SCOPED_TRACE(nSeed);
    const std::string sText = RandomModel(nSeed).Text();
    ASSERT_NO_FATAL_FAILURE(ExpectSameModel(sText));
    ASSERT_NO_FATAL_FAILURE(ExpectSameModel(ToBinary(sText)));
    ASSERT_NO_FATAL_FAILURE(ExpectSameModel(Compress(ToBinary(sText))));
  }
}

}  // namespace
}  // namespace quillorbit::test
