#include <fstream>
#include <gmock/gmock.h>

#include <QByteArray>

#include "fakes/direct3d8.h"
#include "platform/d3dx8/mesh.h"
#include "platform/d3dx8/mszip.h"
#include "support/child_process.h"

namespace quillorbit::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Lines = std::vector<std::string>;
using Floats = std::vector<float>;

/// A model from a file of these bytes, and what it made of a device that records.
struct Model {
  explicit Model(const std::string& sBytes) {
    std::ofstream(folder / "model.x", std::ios::binary) << sBytes;
    mesh = d3dx8::LoadMeshFromX(folder / "model.x", platform::D3DXMESH_MANAGED, device, materials,
                                nMaterials);
    created = log.Take();
    Draw(0);
    vertices = Values<float>(dynamic_cast<fakes::FakeVertexBuffer&>(*device->vertices).bytes);
    indexes = Values<std::uint16_t>(dynamic_cast<fakes::FakeIndexBuffer&>(*device->indices).bytes);
  }
  /// The call that draws a subset; empty when there is none.
  std::string Draw(std::uint32_t iSubset) {
    mesh->DrawSubset(iSubset);
    const Lines calls = log.Take();
    return calls.empty() ? "" : calls.back();
  }
  template <class T>
  static std::vector<T> Values(const std::vector<std::byte>& bytes) {
    const auto* const pFirst = reinterpret_cast<const T*>(bytes.data());
    return {pFirst, pFirst + bytes.size() / sizeof(T)};
  }

  TemporaryFolder folder;
  fakes::CallLog log;
  std::shared_ptr<fakes::FakeDirect3DDevice> device =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  std::shared_ptr<platform::D3DXBuffer> materials;
  std::int32_t nMaterials = -1;
  std::shared_ptr<platform::ID3DXMesh> mesh;
  Lines created;
  Floats vertices;  ///< position, normal and texture coordinates
  std::vector<std::uint16_t> indexes;
};

std::string ReadModel(const std::string& sName) { return ReadFile(QUILLORBIT_MODELS "/" + sName); }

TEST(Model, IsReadFromEveryForm) {
  std::string sBinary = ReadModel("compressed-binary.x");
  sBinary = "xof 0303bin 0032" + d3dx8::InflateMszip(sBinary.substr(16), 1U << 20U);
  for (const std::string& sBytes :
       {ReadModel("house.x"), sBinary, ReadModel("compressed-binary.x")}) {
    SCOPED_TRACE(sBytes.substr(0, 16));
    Model house(sBytes);
    // Worked out by hand: the inner frame sends (x, y, z) to (-y, x, z + 3), the outer one that to
    // (10 - 2y, x, z + 3).
    const float a = -0.4472136F, b = 0.8944272F;  // (-1/2, 1, 0) at length 1
    EXPECT_THAT(
        house.vertices,
        testing::Pointwise(
            testing::FloatEq(),
            Floats{10, 0,    3, 0, 0, 1, 0,    0,     10, 1, 3, 0, 0, 1, 1,    0,  //
                   8,  1,    3, 0, 0, 1, 1,    1,     8,  0, 3, a, b, 0, 0,    1,  //
                   6,  0.5F, 3, a, b, 0, 0.5F, 0.25F, 10, 0, 4, 0, 0, 0, 0.5F, 0.5F, 10, 1, 3,
                   a,  b,    0, 1, 0, 8, 1,    3,     a,  b, 0, 1, 1, 0, 0,    0,    0,  0, 0,
                   0,  0,    1, 0, 0, 0, 0,    0,     0,  0, 0, 1, 0, 0, 0,    0,    0,  0}));
    EXPECT_THAT(house.indexes, ElementsAre(0, 6, 7, 0, 7, 4, 0, 4, 3, 0, 1, 2, 0, 2, 3,  // wall
                                           8, 9, 10, 8, 10, 9));                         // plate
    EXPECT_EQ(house.created,
              (Lines{"CreateVertexBuffer 352, 0, 274, 1", "CreateIndexBuffer 42, 0, 101, 1"}));
    EXPECT_EQ(house.Draw(0), "DrawIndexedPrimitive 4, 0, 8, 0, 3");
    EXPECT_EQ(house.Draw(1), "DrawIndexedPrimitive 4, 0, 4, 9, 2");
    EXPECT_EQ(house.Draw(2), "DrawIndexedPrimitive 4, 8, 3, 15, 2");
    EXPECT_EQ(house.Draw(3), "");
    std::ostringstream red;
    red << fakes::Exact(d3dx8::BufferGetMaterial(*house.materials, 0));
    EXPECT_EQ(red.str(), "1 0 0 1 0 0 0 0 0x1p-1 0x1p-2 0x1p-3 0 0 0 0x1p-2 0 8");
    EXPECT_EQ(d3dx8::BufferGetTextureName(*house.materials, 1), "blue.bmp");
    EXPECT_THROW((void)d3dx8::BufferGetMaterial(*house.materials, 3), platform::D3DError);
  }
}

const std::string sHead = "xof 0303txt 0032\n";
const std::string sTriangle = "Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3; 0,1,2;; ";
const std::string sMaterial = "Material { 1;0;0;1;; 0; 0;0;0;; 0;0;0;; ";

TEST(Model, IsWhatExportersMean) {
  for (const std::string& sBody : Lines{
           "mesh 01_part#a{3;0;0;0;1;0;0;0;1;0;1;3;0;1;2;}\r\n\x1A",
           "Mesh{\t3;;; 0. .0 -0,;,+1.0e+0;0e5;0;0 1E0 0;1 3 0 1 2}// end",
           "Unknown thing { 1; \"}\"; Inner { { a } } }; ;" + sTriangle + "Other { 1; } {ref} };",
           sTriangle + "MeshNormals { 1; 1;1;1;; 0; } MeshTextureCoords { 4; 0;0;0;0;0;0;7;7; } }"})
    EXPECT_EQ(Model(sHead + sBody).vertices,
              (Floats{0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}));
  // Faces without an index have the last one; a mesh without materials is white beside others.
  Model model(sHead + "Mesh { 3; 0;0;0;1;0;0;0;1;0; 3; 3;0,1,2; 3;1,2,0; 3;2,0,1; " +
              "MeshMaterialList { 2; 2; 0, 1; " + sMaterial + "}" + sMaterial + "} } }" +
              sTriangle + "}");
  EXPECT_EQ(model.Draw(1), "DrawIndexedPrimitive 4, 0, 3, 3, 2");
  EXPECT_THAT(model.indexes, ElementsAre(0, 1, 2, 1, 2, 0, 2, 0, 1, 3, 4, 5));
  EXPECT_EQ(d3dx8::BufferGetMaterial(*model.materials, 2).Diffuse.g, 1);
}

TEST(Model, NamesTexturesInsideItsFolder) {
  const std::pair<std::string, std::string> names[] = {
      {R"(maps\\a/\phone.png)", "maps/a/phone.png"},
      {R"(C:\models\phone.png)", "phone.png"},
      {R"(.\maps\..\..\phone.png)", "phone.png"},
      {"gr\xFC\x80.bmp", "gr\xC3\xBC\xE2\x82\xAC.bmp"},
      {std::string("a.bmp\0rest", 10), "a.bmp"}};
  for (const auto& [sStored, sName] : names) {
    const Model model(sHead + sTriangle + "MeshMaterialList { 1; 1; 0; " + sMaterial +
                      "TextureFilename { \"" + sStored + "\"; } } } }");
    EXPECT_EQ(d3dx8::BufferGetTextureName(*model.materials, 0), sName);
  }
}

std::string Repeated(int nTimes, const std::string& s) {
  return QByteArray::fromStdString(s).repeated(nTimes).toStdString();
}

TEST(Model, IsRefusedWithTheReason) {
  const std::string sText = sHead + sTriangle, sHouse = ReadModel("compressed-binary.x");
  const std::string sList = sText + "MeshMaterialList { 1; 1; ", sMany = Repeated(30000, "0;");
  const std::pair<std::string, std::string> files[] = {
      {sHead + "Mesh { 0; 0; }", "it has no faces"},
      {sHead + "Mesh {\n 3; 0;0;0;, 1;0;0;,\n 0;1;}", "line 4: a number is expected, not \"}\""},
      {sHead + "Mesh { 1431655766; 0;0;0;", "a count is larger than the rest"},
      {sHead + "Mesh { 3; 0;0;0;1;0;0;0;1;0; 1; 3; 0,1,3; }", "a corner that does not exist"},
      {sText + "MeshNormals { 1; 0;0;1; 1; 4; 0,0,0,0; } }", "are not those of the mesh"},
      {sList + "1; " + sMaterial + "} } }", "a material that does not exist"},
      {sList + "0; " + Repeated(4097, sMaterial + "}") + "} }", "more than 4096 materials"},
      {sHead + Repeated(257, "Frame {") + sTriangle + "}", "more than 256 deep"},
      {sHead + "Mesh G { 10000;" + sMany + "1;3;0,1,2;} Frame {" + Repeated(105, "{G}") + "}",
       "more than 1048576 vertices"},
      {"xof 0303bin 0032" + std::string("\x06\0\x15\0\0\0", 6), "a list is longer"},
      {sHouse.substr(0, 100), "the compressed data are cut off"},
      {sHouse + std::string("\1\0\2\0CK", 6), "damaged"}};
  for (const auto& [sBytes, sWhy] : files)
    EXPECT_THAT([&file = sBytes] { const Model model(file); },
                testing::ThrowsMessage<platform::D3DError>(
                    testing::AllOf(HasSubstr("/model.x: "), HasSubstr(sWhy))));
}

}  // namespace
}  // namespace quillorbit::test
