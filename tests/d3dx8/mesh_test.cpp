#include "platform/d3dx8/mesh.h"

#include <array>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <system_error>

#include "d3dx8/x_samples.h"

namespace quillorbit::test {
namespace {

using Lines = std::vector<std::string>;

std::string Shown(const platform::D3DMATERIAL8& m) {
  std::ostringstream s;
  s << fakes::Exact(m.Diffuse) << " | " << fakes::Exact(m.Ambient) << " | "
    << fakes::Exact(m.Specular) << " | " << fakes::Exact(m.Emissive) << " | " << m.Power;
  return s.str();
}

/// Materials with their textures.
Lines Materials(const LoadedMesh& loaded) {
  Lines lines;
  for (std::int32_t i = 0; i < loaded.lMaterials; ++i)
    lines.push_back(Shown(d3dx8::BufferGetMaterial(*loaded.materials, i)) + " | " +
                    d3dx8::BufferGetTextureName(*loaded.materials, i));
  return lines;
}

Lines DrawCalls(const std::string& sPrimitive) {
  return {"SetVertexShader 274", "SetStreamSource 0, buffer, 32", "SetIndices buffer, 0",
          "DrawIndexedPrimitive 4, " + sPrimitive};
}

/// Everything that the house becomes, worked out by hand: the inner frame sends (x, y, z) to
/// (-y, x, z + 3), the outer one that to (10 - 2y, x, z + 3).
void ExpectHouse(LoadedMesh& house) {
  EXPECT_EQ(house.mesh->GetNumVertices(), 15U);
  EXPECT_EQ(house.mesh->GetNumFaces(), 9U);
  EXPECT_EQ(house.Draw(0), DrawCalls("0, 8, 0, 3"));
  EXPECT_EQ(house.Draw(1), DrawCalls("0, 4, 9, 2"));
  EXPECT_EQ(house.Draw(2), DrawCalls("8, 3, 15, 2"));
  EXPECT_EQ(house.Draw(3), DrawCalls("11, 4, 21, 2"));
  EXPECT_EQ(house.Draw(4), Lines{});
  EXPECT_EQ(house.Draw(0xFFFFFFFF), Lines{});

  const float a = -0.4472136F, b = 0.8944272F;  // (-1/2, 1, 0) at length 1
  const std::vector<Vertex> expected = {
      {10, 0, 3, 0, 0, 1, 0, 0}, {10, 1, 3, 0, 0, 1, 1, 0},       {8, 1, 3, 0, 0, 1, 1, 1},
      {8, 0, 3, a, b, 0, 0, 1},  {6, 0.5, 3, a, b, 0, 0.5, 0.25}, {10, 0, 4, 0, 0, 0, 0.5, 0.5},
      {10, 1, 3, a, b, 0, 1, 0}, {8, 1, 3, a, b, 0, 1, 1},        {0, 0, 0, 0, 0, 0, 0, 0},
      {1, 0, 0, 0, 0, 0, 0, 0},  {0, 1, 0, 0, 0, 0, 0, 0},        {0, 0, 5, 0, 0, 0, 0, 0},
      {0, 2, 5, 0, 0, 0, 0, 0},  {3, 2, 5, 0, 0, 0, 0, 0},        {3, 0, 5, 0, 0, 0, 0, 0}};
  EXPECT_TRUE(house.Vertices() == expected);
  EXPECT_EQ(house.Indexes(),
            (std::vector<std::uint32_t>{0,  6,  7,  0,  7,  4, 0, 4, 3,  // the pentagon, red
                                        0,  1,  2,  0,  2,  3,           // the square, blue
                                        8,  9,  10, 8,  10, 9,           // the plate
                                        11, 12, 13, 11, 13, 14}));       // the flag

  EXPECT_EQ(Materials(house),
            (Lines{"1 0 0 1 | 0 0 0 0 | 0x1p-1 0x1p-2 0x1p-3 0 | 0 0 0x1p-2 0 | 8 | skin\\red.bmp",
                   "0 0 1 0x1p-1 | 0 0 0 0 | 0 0 0 0 | 0 0 0 0 | 2 | blue.bmp",
                   "0 1 0 1 | 0 0 0 0 | 0 0 0 0 | 0 0 0 0 | 0 | ",
                   "1 1 1 1 | 0 0 0 0 | 0 0 0 0 | 0 0 0 0 | 0 | "}));
  for (const std::int32_t i : {-1, 4})
    EXPECT_THROW(static_cast<void>(d3dx8::BufferGetMaterial(*house.materials, i)),
                 platform::D3DError);
}

/// An object that makes a file longer than two blocks, with repetitions that reach far back.
std::string Ballast() {
  std::mt19937 random(7);
  std::string sNumbers, s = "Ballast { ";
  for (int i = 0; i < 2500; ++i) sNumbers += std::to_string(random() % 1000) + ".25; ";
  for (int i = 0; i < 5; ++i) s += sNumbers;
  return s + "}\n";
}

TEST(Mesh, AModelIsReadWholeFromEveryForm) {
  std::string sLong = sHouse;
  sLong.insert(sLong.find("Material Red"), Ballast());
  const std::map<std::string, std::string> forms = {
      {"text", sHouse},
      {"binary", ToBinary(sHouse)},
      {"binary, 64 bits", ToBinary(sHouse, 8)},
      {"compressed text", Compress(sLong)},
      {"compressed binary", Compress(ToBinary(sLong))},
      {"compressed binary, 64 bits", Compress(ToBinary(sLong, 8))}};
  for (const auto& [sForm, sBytes] : forms) {
    SCOPED_TRACE(sForm);
    LoadedMesh house(sBytes, platform::D3DXMESH_MANAGED);
    EXPECT_EQ(house.created,
              (Lines{"CreateVertexBuffer 480, 0, 274, 1", "CreateIndexBuffer 54, 0, 101, 1"}));
    ExpectHouse(house);
  }
}

TEST(Mesh, OptionsChooseThePoolAndTheSizeOfAnIndex) {
  LoadedMesh house(sHouse, platform::D3DXMESH_32BIT);
  EXPECT_EQ(house.created,
            (Lines{"CreateVertexBuffer 480, 0, 274, 0", "CreateIndexBuffer 108, 0, 102, 0"}));
  ExpectHouse(house);
}

TEST(Mesh, KeepsTheDeviceAlive) {
  LoadedMesh house(sHouse);
  const std::weak_ptr<fakes::FakeDirect3DDevice> device = house.device;
  house.device.reset();
  EXPECT_EQ(house.Draw(1), DrawCalls("0, 4, 9, 2"));
  house.mesh.reset();
  EXPECT_TRUE(device.expired());
}

TEST(Mesh, ARefusalOfTheDeviceChangesNothing) {
  LoadedMesh house(sHouse);
  const auto mesh = house.mesh;
  const auto materials = house.materials;
  for (const std::size_t nCall : {1U, 2U}) {
    house.log.Take();
    house.log.FailAt(nCall);
    EXPECT_THROW(house.Load(0), std::system_error);
    EXPECT_TRUE(house.mesh == mesh && house.materials == materials && house.lMaterials == 4);
  }
}

/// A mesh of so many separate positions, of which the last three are a face.
std::string ManyVertices(std::uint32_t nVertices) {
  std::string s = "xof 0303txt 0032\nMesh { " + std::to_string(nVertices) + ";";
  for (std::uint32_t i = 0; i < nVertices; ++i) s += "0;0;" + std::to_string(i % 10) + ";,";
  const auto corner = [&](std::uint32_t n) { return std::to_string(nVertices - n) + ","; };
  return s + "1;3;" + corner(3) + corner(2) + corner(1) + ";}";
}

TEST(Mesh, MoreVerticesThan16BitsCountHave32BitIndexes) {
  LoadedMesh most(ManyVertices(65535));
  EXPECT_EQ(most.created[1], "CreateIndexBuffer 6, 0, 101, 0");
  EXPECT_EQ(most.Draw(0), DrawCalls("65532, 3, 0, 1"));
  EXPECT_EQ(most.Indexes(), (std::vector<std::uint32_t>{65532, 65533, 65534}));
  LoadedMesh more(ManyVertices(65540));
  EXPECT_EQ(more.created[1], "CreateIndexBuffer 12, 0, 102, 0");
  EXPECT_EQ(more.Draw(0), DrawCalls("65537, 3, 0, 1"));
  EXPECT_EQ(more.Indexes(), (std::vector<std::uint32_t>{65537, 65538, 65539}));
  EXPECT_EQ(more.Vertices()[65539].z, 9);
}

TEST(Mesh, WithoutMaterialsAllFacesAreInSubset0) {
  LoadedMesh loaded(
      "xof 0303txt 0032\nMesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3; 0,1,2;;"
      " MeshMaterialList { 0; 0;; } }\nFrame { Mesh { 0; 0; } }");
  EXPECT_EQ(loaded.lMaterials, 0);
  ASSERT_TRUE(loaded.materials);
  EXPECT_EQ(loaded.Draw(0), DrawCalls("0, 3, 0, 1"));
  EXPECT_EQ(loaded.Draw(1), Lines{});
}

TEST(Mesh, FacesAreDrawnByTheirSubsetsAndThoseWithoutAnIndexAsTheLast) {
  LoadedMesh loaded(R"(xof 0303txt 0032
Mesh { 6; 0;0;0;, 1;0;0;, 2;0;0;, 3;0;0;, 4;0;0;, 5;0;0;;
 5; 3;0,1,2;, 3;1,2,3;, 3;2,3,4;, 3;3,4,5;, 3;5,4,3;;
 MeshMaterialList { 3; 3; 2, 0, 2;; Material { 0;0;0;1;;0;0;0;0;;0;0;0;; }
   Material { 0;0;0;2;;0;0;0;0;;0;0;0;; } Material { 0;0;0;3;;0;0;0;0;;0;0;0;; } } })");
  EXPECT_EQ(loaded.Draw(0), DrawCalls("1, 3, 0, 1"));
  EXPECT_EQ(loaded.Draw(1), Lines{});
  EXPECT_EQ(loaded.Draw(2), DrawCalls("0, 6, 3, 4"));
  EXPECT_EQ(loaded.Indexes(),
            (std::vector<std::uint32_t>{1, 2, 3, 0, 1, 2, 2, 3, 4, 3, 4, 5, 5, 4, 3}));
}

TEST(Mesh, FramesThatMirrorOrFlattenKeepTheOrderOfCornersAndTurnNormals) {
  const auto inFrame = [](const std::string& sMatrix) {
    return "xof 0303txt 0032\nFrame { FrameTransformMatrix { " + sMatrix +
           " } Mesh { 3; 1;0;0;, 1;1;0;, 1;0;2;; 1; 3; 0,1,2;;"
           " MeshNormals { 1; 2;0;0;; 1; 3; 0,0,0;; } } }";
  };
  LoadedMesh mirrored(inFrame("-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1;;"));
  mirrored.Draw(0);
  EXPECT_EQ(mirrored.Indexes(), (std::vector<std::uint32_t>{0, 1, 2}));
  EXPECT_TRUE(mirrored.Vertices()[2] == (Vertex{-1, 0, 2, -1, 0, 0, 0, 0}));
  LoadedMesh flat(inFrame("0,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1;;"));
  flat.Draw(0);
  EXPECT_TRUE(flat.Vertices()[2] == (Vertex{0, 0, 2, 1, 0, 0, 0, 0}));
  LoadedMesh gone(inFrame("0,0,0,0, 0,0,0,0, 0,0,1,0, 0,0,0,2;;"));
  gone.Draw(0);
  EXPECT_TRUE(gone.Vertices()[2] == (Vertex{0, 0, 1, 0, 0, 0, 0, 0}));
  LoadedMesh outside(
      "xof 0303txt 0032\nMesh { 3; 1;0;0;, 1;1;0;, 1;0;2;; 1; 3; 0,1,2;;"
      " MeshNormals { 1; 2;0;0;; 1; 3; 0,0,0;; } }");
  outside.Draw(0);
  EXPECT_TRUE(outside.Vertices()[2] == (Vertex{1, 0, 2, 2, 0, 0, 0, 0})) << "is left alone";
}

// ---- Models made at random, compared with what another library reads

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
    const Lines calls = loaded.Draw(static_cast<std::uint32_t>(i));
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

TEST(Mesh, RandomModelsAreWhatAnotherLibraryReads) {
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
