#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/direct3d8.h"
#include "platform/d3dx8/mesh.h"
#include "platform/d3dx8/mszip.h"
#include "support/child_process.h"

namespace quillorbit::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Vertex {
  float x, y, z, nx, ny, nz, u, v;
  bool operator==(const Vertex&) const = default;
};

/// A model from a file of these bytes, and what it made of a device that records.
struct Model {
  explicit Model(const std::string& sBytes, std::uint32_t nOptions = platform::D3DXMESH_MANAGED) {
    std::ofstream(folder / "model.x", std::ios::binary) << sBytes;
    Load(nOptions);
  }
  void Load(std::uint32_t nOptions) {
    mesh = d3dx8::LoadMeshFromX(folder / "model.x", nOptions, device, materials, nMaterials);
    created = log.Take();
  }
  std::vector<std::string> Draw(std::uint32_t iSubset) {
    mesh->DrawSubset(iSubset);
    return log.Take();
  }
  std::vector<Vertex> Vertices() {
    Draw(0);
    return Values<Vertex>(dynamic_cast<fakes::FakeVertexBuffer&>(*device->vertices).bytes);
  }
  std::vector<std::uint32_t> Indexes() {
    Draw(0);
    const auto& bytes = dynamic_cast<fakes::FakeIndexBuffer&>(*device->indices).bytes;
    if (bytes.size() == std::size_t{12} * mesh->GetNumFaces()) return Values<std::uint32_t>(bytes);
    const auto shorts = Values<std::uint16_t>(bytes);
    return {shorts.begin(), shorts.end()};
  }
  template <class T>
  static std::vector<T> Values(const std::vector<std::byte>& bytes) {
    std::vector<T> values(bytes.size() / sizeof(T));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
  }

  TemporaryFolder folder;
  fakes::CallLog log;
  std::shared_ptr<fakes::FakeDirect3DDevice> device =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  std::shared_ptr<platform::D3DXBuffer> materials;
  std::int32_t nMaterials = -1;
  std::shared_ptr<platform::ID3DXMesh> mesh;
  std::vector<std::string> created;
};

/// A triangle's corners (as in Vertex) and its material's colours and power.
struct Triangle {
  std::vector<float> values;
  std::string sTexture;
  bool operator==(const Triangle& other) const {
    return sTexture == other.sTexture &&
           std::equal(values.begin(), values.end(), other.values.begin(), other.values.end(),
                      [](float a, float b) { return std::abs(a - b) < 1e-5F; });
  }
};

std::vector<Triangle> TrianglesOf(Model& model) {
  std::vector<Triangle> triangles;
  const auto vertices = model.Vertices();
  const auto indexes = model.Indexes();
  for (std::int32_t i = 0; i < model.nMaterials; ++i) {
    unsigned nFirst = 0, nCount = 0;
    std::sscanf(model.Draw(static_cast<std::uint32_t>(i)).at(3).c_str(),
                "DrawIndexedPrimitive 4, %*u, %*u, %u, %u", &nFirst, &nCount);
    const auto m = d3dx8::BufferGetMaterial(*model.materials, i);
    for (unsigned j = nFirst; j < nFirst + 3 * nCount; ++j) {
      if (j % 3 == 0)
        triangles.push_back({{m.Diffuse.r, m.Diffuse.g, m.Diffuse.b, m.Power, m.Specular.r,
                              m.Specular.g, m.Specular.b, m.Emissive.b},
                             d3dx8::BufferGetTextureName(*model.materials, i)});
      const Vertex& p = vertices.at(indexes.at(j));
      triangles.back().values.insert(triangles.back().values.end(),
                                     {p.x, p.y, p.z, p.nx, p.ny, p.nz, p.u, p.v});
    }
  }
  return triangles;
}

/// The other library makes everything right-handed: it turns z round, the order of corners, and v.
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
      for (unsigned n = face.mNumIndices, i = 2; i < n; ++i) {
        Triangle triangle{{diffuse.r, diffuse.g, diffuse.b, fPower, specular.r, specular.g,
                           specular.b, emissive.b},
                          texture.C_Str()};
        for (const unsigned j : {n - 1, n - i, n - 1 - i}) {
          const unsigned k = face.mIndices[j];
          const aiVector3D p = mesh.mVertices[k];
          const aiVector3D q = mesh.HasNormals() ? mesh.mNormals[k] : aiVector3D();
          const aiVector3D t =
              mesh.HasTextureCoords(0) ? mesh.mTextureCoords[0][k] : aiVector3D(0, 1, 0);
          triangle.values.insert(triangle.values.end(),
                                 {p.x, p.y, -p.z, q.x, q.y, -q.z, t.x, 1 - t.y});
        }
        triangles.push_back(triangle);
      }
    }
  }
  return triangles;
}

std::string ReadModel(const std::string& sName) { return ReadFile(QUILLORBIT_MODELS "/" + sName); }

std::vector<std::string> DrawCalls(const std::string& sPrimitive) {
  return {"SetVertexShader 274", "SetStreamSource 0, buffer, 32", "SetIndices buffer, 0",
          "DrawIndexedPrimitive 4, " + sPrimitive};
}

TEST(Model, IsWhatAnotherLibraryReadsInEveryForm) {
  std::string sBinary = ReadModel("compressed-binary.x");
  sBinary = "xof 0303bin 0032" + d3dx8::InflateMszip(sBinary.substr(16), 1U << 20U);
  for (const std::string& sBytes :
       {ReadModel("house.x"), sBinary, ReadModel("compressed-text.x"),
        ReadModel("compressed-binary.x"), ReadModel("compressed-binary-64.x")}) {
    SCOPED_TRACE(sBytes.substr(0, 16));
    Model house(sBytes);
    Assimp::Importer importer;
    const aiScene* const pScene =
        importer.ReadFile(house.folder / "model.x", aiProcess_PreTransformVertices);
    ASSERT_NE(pScene, nullptr) << importer.GetErrorString();
    const auto ours = TrianglesOf(house), theirs = TrianglesOf(*pScene);
    EXPECT_TRUE(std::is_permutation(ours.begin(), ours.end(), theirs.begin(), theirs.end()));
    EXPECT_EQ(ours.size(), 7U);

    EXPECT_THAT(house.created, ElementsAre("CreateVertexBuffer 352, 0, 274, 1",
                                           "CreateIndexBuffer 42, 0, 101, 1"));
    EXPECT_EQ(house.Draw(0), DrawCalls("0, 8, 0, 3"));  // what it uses of shared vertices
    EXPECT_EQ(house.Draw(1), DrawCalls("0, 4, 9, 2"));
    EXPECT_EQ(house.Draw(2), DrawCalls("8, 3, 15, 2"));
    EXPECT_THAT(house.Draw(3), IsEmpty());
    EXPECT_EQ(d3dx8::BufferGetMaterial(*house.materials, 1).Diffuse.a, 0.5F);
    EXPECT_EQ(d3dx8::BufferGetMaterial(*house.materials, 1).Ambient.r, 0);
  }
}

const std::string sHead = "xof 0303txt 0032\n";
const std::string sTriangle = "Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3; 0,1,2;; ";
const std::string sMaterial = "Material { 1;0;0;1;; 0; 0;0;0;; 0;0;0;; ";

TEST(Model, ManagesItsBuffersOnTheDeviceThatItKeeps) {
  Model house(ReadModel("house.x"), platform::D3DXMESH_32BIT);
  EXPECT_THAT(house.created,
              ElementsAre("CreateVertexBuffer 352, 0, 274, 0", "CreateIndexBuffer 84, 0, 102, 0"));
  EXPECT_THAT(house.Indexes(), ElementsAre(0, 6, 7, 0, 7, 4, 0, 4, 3, 0, 1, 2, 0, 2, 3,  // wall
                                           8, 9, 10, 8, 10, 9));                         // plate
  const auto mesh = house.mesh;
  for (const std::size_t nCall : {1U, 2U}) {
    house.log.Take();
    house.log.FailAt(nCall);
    EXPECT_THROW(house.Load(0), std::system_error);
    EXPECT_TRUE(house.mesh == mesh && house.nMaterials == 3);
  }
  for (const std::int32_t i : {-1, 3})
    EXPECT_THROW((void)d3dx8::BufferGetMaterial(*house.materials, i), platform::D3DError);

  // More vertices than 16-bit indexes can name have longer ones.
  for (const std::size_t nVertices : {65535U, 65536U}) {
    std::string sMany = sHead + "Mesh { " + std::to_string(nVertices) + ";";
    for (std::size_t i = 0; i < nVertices; ++i) sMany += "0;0;1;";
    Model many(sMany + "1;3;0,1," + std::to_string(nVertices - 1) + ";}");
    EXPECT_EQ(many.created[1], nVertices == 65535 ? "CreateIndexBuffer 6, 0, 101, 1"
                                                  : "CreateIndexBuffer 12, 0, 102, 1");
    EXPECT_THAT(many.Indexes(), ElementsAre(0, 1, nVertices - 1));
  }
}

TEST(Model, FramesTransformNormalsByTheInverseTransposeAndKeepTheOrderOfCorners) {
  const auto second = [](const std::string& sMatrix, const std::string& sNormal) {
    const std::string sMesh = "Mesh A { 3; 1;0;0;, 1;1;0;, 1;0;2;; 1; 3; 0,1,2;; MeshNormals { 1;" +
                              sNormal + "1; 3; 0,0,0;; } }";
    Model model(sHead + sMesh + "Frame { {A} FrameTransformMatrix { " + sMatrix + " } }");
    EXPECT_THAT(model.Indexes(), ElementsAre(0, 1, 2, 3, 4, 5));
    return model.Vertices()[4];  // the second vertex of the mesh that the frame refers to
  };
  EXPECT_EQ(second("-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,2;;", "2;0;0;"),
            (Vertex{-0.5, 0.5, 0, -1, 0, 0, 0, 0}));
  EXPECT_EQ(second("0,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1;;", "2;0;0;"),
            (Vertex{0, 1, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(second("2,0,0,0, 1,1,0,0, 0,0,1,0, 3,4,5,1;;", "0;5;0;"),
            (Vertex{6, 5, 5, 0, 1, 0, 0, 0}));
}

/// The names of the textures of all materials.
std::vector<std::string> Textures(const std::string& sBody) {
  const Model model(sHead + sBody);
  std::vector<std::string> names;
  for (std::int32_t i = 0; i < model.nMaterials; ++i)
    names.push_back(d3dx8::BufferGetTextureName(*model.materials, i));
  return names;
}

TEST(Model, TakesWhatExportersWrite) {
  const auto list = [](const std::string& s) {
    return sTriangle + "MeshMaterialList { " + s + "} }";
  };
  for (const std::string& sBody :
       {"mesh 01_part#a{3;0;0;0;1;0;0;0;1;0;1;3;0;1;2;}\r\n\x1A" + std::string(),
        "Mesh{\t3;;; 0. .0 -0,;,+1.0e+0;0e5;0;0 1E0 0;1 3 0 1 2}" + std::string(),
        "TEMPLATE Odd { <A-1> array FLOAT f[n]; [Any <B>] [...] }\n# one }\n" + sTriangle +
            "}// end",
        "Unknown thing { 1; \"}\"; Inner { { a } } }; ;" + sTriangle +
            "SkinWeights { 1; } {ref} };",
        sTriangle +
            "MeshNormals { 1; 1;1;1;; 0; } MeshTextureCoords { 5; 0;0;0;0;0;0;7;7;8;8; } }"}) {
    SCOPED_TRACE(sBody);
    EXPECT_EQ(Model(sHead + sBody).Vertices(),
              (std::vector<Vertex>{{}, {1, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0, 0, 0}}));
  }
  // References by name and GUID; of several objects of a name the last one counts.
  const auto named = [](const std::string& sName, const std::string& sTexture) {
    return "Material " + sName + sMaterial.substr(10) + "TextureFileName { \"" + sTexture +
           "\" } }";
  };
  EXPECT_THAT(Textures(named("A {", "a") + named("B { <1b>", "b") +
                       list("4; 1; 0; {B} {<1B>} {A} " + named("A {", "other") + "{A} ")),
              ElementsAre("b", "b", "a", "other", "other"));
  // Faces without an index have the last one; a mesh without materials is white beside others.
  const std::string sFaces = "Mesh { 3; 0;0;0;1;0;0;0;1;0; 3; 3;0,1,2; 3;1,2,0; 3;2,0,1; ";
  Model model(sHead + sFaces + "MeshMaterialList { 2; 2; 1, 0; " + sMaterial + "}" + sMaterial +
              "} } }" + sTriangle + "}");
  EXPECT_EQ(model.Draw(0), DrawCalls("0, 3, 0, 2"));
  EXPECT_EQ(model.Draw(2), DrawCalls("3, 3, 9, 1"));
  EXPECT_THAT(model.Indexes(), ElementsAre(1, 2, 0, 2, 0, 1, 0, 1, 2, 3, 4, 5));
  EXPECT_EQ(d3dx8::BufferGetMaterial(*model.materials, 2).Diffuse.g, 1);
  EXPECT_THAT(Textures(sTriangle + "}"), IsEmpty());
}

TEST(Model, NamesTexturesInsideItsFolder) {
  const std::pair<std::string, std::string> names[] = {
      {"", ""},
      {R"(maps\\phone.png)", "maps/phone.png"},
      {R"(maps\a//b.png)", "maps/a/b.png"},
      {R"(C:\models\phone.png)", "phone.png"},
      {R"(c:phone.png)", "phone.png"},
      {R"(\\server\share\phone.png)", "phone.png"},
      {"/home/phone.png", "phone.png"},
      {R"(.\maps\..\..\phone.png)", "phone.png"},
      {"gr\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80.bmp", "gr\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80.bmp"},
      {"gr\xFC\xDF.bmp", "gr\xC3\xBC\xC3\x9F.bmp"},
      {"\x80\x8A\x9F\xC3", "\xE2\x82\xAC\xC5\xA0\xC5\xB8\xC3\x83"},
      {std::string("a.bmp\0rest", 10), "a.bmp"}};
  for (const auto& [sStored, sName] : names)
    EXPECT_THAT(Textures(sTriangle + "MeshMaterialList { 1; 1; 0; " + sMaterial +
                         "TextureFilename { \"" + sStored + "\"; } } } }"),
                ElementsAre(sName));
}

std::string Repeated(int nTimes, const std::string& s) {
  std::string sAll;
  for (int i = 0; i < nTimes; ++i) sAll += s;
  return sAll;
}

TEST(Model, IsRefusedWithTheReason) {
  const std::string sText = sHead + sTriangle, sHouse = ReadModel("compressed-text.x");
  const auto with = [&](std::size_t nAt, const std::string& s) {
    return std::string(sHouse).replace(nAt, s.size(), s);
  };
  const std::string sMesh = "Mesh A { 3; 0;0;0;1;0;0;0;1;0; 1; 3; 0,1,2; } ";
  const std::string sGrid = "Mesh G { 3000; " + Repeated(9000, "0;") + "1; 3; 0,1,2; } ";
  const std::string sLarge =
      "Frame { FrameTransformMatrix { 1e18,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1 } ";
  const std::pair<std::string, std::string> files[] = {
      {"xaf 0303txt 0032" + sTriangle + "}", "it is no X file"},
      {"xof 0304txt 0032" + sTriangle + "}", "version"},
      {"xof 0303tex 0032" + sTriangle + "}", "form"},
      {"xof 0303txt 0016" + sTriangle + "}", "neither 32 nor 64 bits"},
      {sHead + "Mesh { 0; 0; }", "it has no faces"},
      {sText, "the file ends inside an object"},
      {sHead + "Mesh {\n 3; 0;0;0;, 1;0;0;,\n 0;1;}", "line 4: a number is expected, not \"}\""},
      {sHead + "Mesh { 1431655766; 0;0;0;", "a count is larger than the rest"},
      {sHead + "Mesh { 3; 0;0;0;1;0;0;0;1;0; 1; 2; 0,1; }", "fewer than three corners"},
      {sHead + "Mesh { 3; 0;0;0;1;0;0;0;1;0; 1; 3; 0,1,3; }", "a corner that there is not"},
      {sHead + "Mesh { 1; 0;0;1e19; 0; }", "a number is out of range"},
      {sText + "MeshNormals { 1; 0;0;1; 1; 4; 0,0,0,0; } }", "are not those of the mesh"},
      {sText + "MeshMaterialList { 1; 1; 1; " + sMaterial + "} } }",
       "a material that there is not"},
      {sText + "MeshMaterialList { 1; 1; 0; {Red} } }", "no material that stands before it"},
      {sHead + Repeated(257, "Frame {") + sTriangle + Repeated(258, "}"), "more than 256 deep"},
      {sHead + Repeated(100000, "A{"), "the file ends inside an object"},
      {sHead + sLarge + sLarge + sTriangle + "}}}", "matrices are out of range"},
      {sHead + sGrid + Repeated(400, "Frame { {G} }"), "more than 1048576 vertices"},
      {sHead + sMesh + "Frame { " + Repeated(17000, "{A}") + "}", "more than 16384 meshes"},
      {sText + "MeshMaterialList { 1; 1; 0; " + Repeated(4097, sMaterial + "}") + "} }",
       "more than 4096 materials"},
      {"xof 0303bin 0032\x63" + std::string(1, '\0'), "byte 16: there is no such code as 99"},
      {"xof 0303bin 0032" + std::string("\x06\0\x15\0\0\0", 6), "a list is longer"},
      {"xof 0303bin 0032" + std::string("\x01\0\xFF\xFF\xFF\xFF", 6), "the file is cut off"},
      {sHouse.substr(0, 100), "the compressed data are cut off"},
      {with(18, "\x01"), "the compressed data are cut off"},  // the size of the whole
      {with(21, "\x7F"), "damaged"},                          // the size of a block
      {with(24, "c"), "damaged"},                             // its beginning
      {with(26, "\xFF"), "damaged"},                          // its compressed data
  };
  for (const auto& [sBytes, sWhy] : files) {
    try {
      const Model model(sBytes);
      ADD_FAILURE() << "it is read: " << sBytes.substr(0, 99);
    } catch (const platform::D3DError& e) {
      EXPECT_EQ(e.lNumber, platform::D3DXERR_INVALIDDATA);
      EXPECT_THAT(e.what(), testing::AllOf(HasSubstr("/model.x: "), HasSubstr(sWhy)));
    }
  }
  std::string sBomb = "xof 0303tzip0032" + std::string(4, '\0'), sBlock = sHouse.substr(20);
  sBlock.resize(4U + static_cast<unsigned char>(sBlock[2]) +
                256U * static_cast<unsigned char>(sBlock[3]));
  EXPECT_THROW((void)Model(sBomb + Repeated(513, sBlock)), platform::D3DError);
}

}  // namespace
}  // namespace quillorbit::test
