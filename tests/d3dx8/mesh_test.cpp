#include "platform/d3dx8/mesh.h"

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
  LoadedMesh more(ManyVertices(65536));
  EXPECT_EQ(more.created[1], "CreateIndexBuffer 12, 0, 102, 0");
  EXPECT_EQ(more.Draw(0), DrawCalls("65533, 3, 0, 1"));
  EXPECT_EQ(more.Indexes(), (std::vector<std::uint32_t>{65533, 65534, 65535}));
  EXPECT_EQ(more.Vertices()[65535].z, 5);
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
 MeshMaterialList { 4; 3; 3, 0, 2;; Material { 0;0;0;1;;0;0;0;0;;0;0;0;; }
   Material { 0;0;0;2;;0;0;0;0;;0;0;0;; } Material { 0;0;0;3;;0;0;0;0;;0;0;0;; }
   Material { 0;0;0;4;;0;0;0;0;;0;0;0;; } } })");
  EXPECT_EQ(loaded.Draw(0), DrawCalls("1, 3, 0, 1"));
  EXPECT_EQ(loaded.Draw(1), Lines{});
  EXPECT_EQ(loaded.Draw(2), DrawCalls("2, 4, 3, 3"));
  EXPECT_EQ(loaded.Draw(3), DrawCalls("0, 3, 12, 1"));
  EXPECT_EQ(loaded.Indexes(),
            (std::vector<std::uint32_t>{1, 2, 3, 2, 3, 4, 3, 4, 5, 5, 4, 3, 0, 1, 2}));
}

TEST(Mesh, FacesOfASubsetKeepTheirOrder) {
  std::string sFaces, sMaterials;
  std::vector<std::uint32_t> odd, even;
  for (std::uint32_t i = 0; i < 200; ++i) {
    sFaces += "3;" + std::to_string(i) + ",0,1,";
    sMaterials += i % 2 == 0 ? "1," : "0,";
    for (const std::uint32_t j : {i, 0U, 1U}) (i % 2 == 0 ? even : odd).push_back(j);
  }
  std::string s = ManyVertices(200);
  s = s.substr(0, s.find("1;3;")) + "200;" + sFaces + "MeshMaterialList { 2; 200; " + sMaterials;
  for (int i = 0; i < 2; ++i) s += "Material { 0;0;0;0;;0;0;0;0;;0;0;0;; }";
  LoadedMesh loaded(s + "} }");
  EXPECT_EQ(loaded.Draw(1), DrawCalls("0, 199, 300, 100"));
  odd.insert(odd.end(), even.begin(), even.end());
  EXPECT_EQ(loaded.Indexes(), odd);
}

TEST(Mesh, CornersWithTheSameNormalShareAVertex) {
  LoadedMesh loaded(R"(xof 0303txt 0032
Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 5; 3;0,1,2;, 3;0,1,2;, 3;0,1,2;, 3;0,1,2;, 3;0,1,2;;
 MeshNormals { 5; 0;0;1;, 1;0;0;, 0;0;1;, 0;0;1;, 0;0;1;;
   5; 3;0,0,0;, 3;2,4,3;, 3;1,1,1;, 3;4,3,2;, 3;1,1,1;; } })");
  EXPECT_EQ(loaded.mesh->GetNumVertices(), 6U);
  EXPECT_EQ(loaded.Draw(0), DrawCalls("0, 6, 0, 5"));
  EXPECT_EQ(loaded.Indexes(),
            (std::vector<std::uint32_t>{0, 1, 2, 0, 1, 2, 3, 4, 5, 0, 1, 2, 3, 4, 5}));
}

TEST(Mesh, FramesThatMirrorOrFlattenKeepTheOrderOfCornersAndTurnNormals) {
  const auto inFrame = [](const std::string& sMatrix) {
    return "xof 0303txt 0032\nFrame { FrameTransformMatrix { " + sMatrix +
           " } Mesh { 3; 1;0;0;, 1;1;0;, 1;0;2;; 1; 3; 0,1,2;;"
           " MeshNormals { 1; 2;0;0;; 1; 3; 0,0,0;; } } }";
  };
  LoadedMesh mirrored(inFrame("-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,2;;"));
  mirrored.Draw(0);
  EXPECT_EQ(mirrored.Indexes(), (std::vector<std::uint32_t>{0, 1, 2}));
  EXPECT_TRUE(mirrored.Vertices()[1] == (Vertex{-0.5, 0.5, 0, -1, 0, 0, 0, 0}));
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

}  // namespace
}  // namespace quillorbit::test
