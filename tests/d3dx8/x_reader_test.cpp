#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

#include "d3dx8/x_samples.h"

namespace quillorbit::test {
namespace {

using testing::HasSubstr;

const std::string sHead = "xof 0303txt 0032\n";
const std::string sTriangle = "Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3; 0,1,2;; }";
const std::string sMaterial = "1;0;0;1;; 0; 0;0;0;; 0;0;0;;";

/// The triangle with an object of the mesh behind its values.
std::string MeshWith(const std::string& sObject) {
  return sTriangle.substr(0, sTriangle.size() - 1) + sObject + " }";
}

std::string TriangleWith(const std::string& sObject) { return sHead + MeshWith(sObject); }

std::string Binary(const std::string& sBody) { return ToBinary(sHead + sBody); }

void ExpectTriangle(const std::string& sBytes) {
  SCOPED_TRACE(sBytes);
  LoadedMesh loaded(sBytes);
  loaded.mesh->DrawSubset(0);
  EXPECT_TRUE(loaded.Vertices() ==
              (std::vector<Vertex>{
                  {0, 0, 0, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(loaded.Indexes(), (std::vector<std::uint32_t>{0, 1, 2}));
}

TEST(XReader, TakesWhatExportersWrite) {
  for (const std::string& sBody : std::vector<std::string>{
           sTriangle,
           "mesh 01_part#a{3;0;0;0;1;0;0;0;1;0;1;3;0;1;2;}\r\n\x1A",
           "Mesh{\t3;;; 0. .0 -0,;,+1.0e+0;0e5;0;0 1E0 0;1 3 0 1 2}",
           "Mesh a.b-c { <3d82ab44-62da-11cf-ab39-0020af71e433>" + sTriangle.substr(6),
           "# one\n// two }\n" + sTriangle + "// the end",
           "Mesh { 3; 0;0;0;// comment\n 1;0;0; # comment\n 0;1;0;; 1; 3; 0,1,2;; }",
           "TEMPLATE Odd { <A-1> array FLOAT f[n]; [Any <B>] [...] }\n" + sTriangle,
           "Unknown thing { 1; \"}\"; Inner { 2; { a } } }; ;" + sTriangle + ";",
           "Frame { { nothing } Frame {} " +
               MeshWith("SkinWeights { \"bone\"; 1; } { reference }") + "}",
           "Animation A { { A } } " + sTriangle,
       })
    ExpectTriangle(sHead + sBody);
  ExpectTriangle("xof 0302txt 0064" + sTriangle);
  ExpectTriangle(TriangleWith("MeshNormals { 1; 1;1;1;; 0; }"));
  ExpectTriangle(TriangleWith("MeshTextureCoords { 5; 0;0; 0;0; 0;0; 7;7; 8;8; }"));
}

TEST(XReader, TakesTheTokensOfTheBinaryForm) {
  const std::string sModel = "Mesh { 3; 0.0;0.0;0.0; 1.0;0.0;0.0; 0.0;1.0;0.0; 1; 3; 0,1,2; ";
  ExpectTriangle(Binary("template T { <3D82AB44-62DA-11cf-AB39-0020AF71E433> DWORD n ; }" + sModel +
                        "} Other { <3D82AB44-62DA-11cf-AB39-0020AF71E433> \"a\"; 1.0 }"));
  // Whole numbers where others are expected, one by one, and a list without any
  std::string s = Binary("Mesh { ");
  for (const int n : {3, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 3, 0, 1, 2})
    s += std::string("\x03\0", 2) + static_cast<char>(n) + std::string("\0\0\0\x14\0", 5);
  ExpectTriangle(s + std::string("\x06\0\0\0\0\0\x0B\0", 8));
  // The separator behind a text with 32 bits
  s = Binary("A { \"text\"; } " + sModel + "}");
  s.insert(s.find("text") + 6, 2, '\0');
  ExpectTriangle(s);
}

/// The names of the textures of all materials.
std::vector<std::string> Textures(const std::string& sBytes) {
  const LoadedMesh loaded(sBytes);
  std::vector<std::string> names;
  for (std::int32_t i = 0; i < loaded.lMaterials; ++i)
    names.push_back(d3dx8::BufferGetTextureName(*loaded.materials, i));
  return names;
}

TEST(XReader, FindsWhatNamesAndGuidsReferTo) {
  const auto textured = [](const std::string& sName, const std::string& sTexture) {
    return "Material " + sName + sMaterial + " TextureFileName { \"" + sTexture + "\" } }\n";
  };
  EXPECT_EQ(Textures(sHead + textured("A {", "a") + textured("B { <1b>", "b") + "Frame { " +
                     textured("{ <2 C>", "c") + "}" +
                     MeshWith("MeshMaterialList { 6; 1; 0; {B} {<1B>} {A <1B>} {none <2c>} {A} " +
                              textured("A {", "other") + "{A} }")),
            (std::vector<std::string>{"b", "b", "a", "c", "a", "other", "other"}));
  EXPECT_EQ(Textures(sHead + "TextureFilename T { \"t\"; } Material A { " + sMaterial +
                     " {T} {unknown} }" + MeshWith("MeshMaterialList { 1; 0; {A} }")),
            std::vector<std::string>{"t"});
}

TEST(XReader, TheLastOfSeveralCounts) {
  const auto list = [](const std::string& sTextures) {
    return "MeshMaterialList { 1; 1; 0; Material { " + sMaterial + sTextures + "} }";
  };
  EXPECT_EQ(Textures(TriangleWith(list("TextureFilename { \"a\"; }") +
                                  list("TextureFilename { \"b\"; } TextureFilename { \"c\"; }"))),
            std::vector<std::string>{"c"});
}

TEST(XReader, AMeshAlsoStandsWhereAFrameRefersToIt) {
  LoadedMesh loaded(sHead + "Mesh A" + sTriangle.substr(4) +
                    "Frame { { A } FrameTransformMatrix {"
                    " 1;0;0;0; 0;1;0;0; 0;0;1;0; 7;0;0;1; } Frame { { A } } }");
  loaded.mesh->DrawSubset(0);
  EXPECT_EQ(loaded.Indexes(), (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(loaded.Vertices()[2].x, 0);
  EXPECT_EQ(loaded.Vertices()[5].x, 7);
  EXPECT_EQ(loaded.Vertices()[8].x, 7);
}

TEST(XReader, TextureNamesAreUtf8WithSingleBackslashes) {
  const std::map<std::string, std::string> names = {
      {"", ""},
      {R"(C:\\maps\a\\\\b.bmp\)", R"(C:\maps\a\\b.bmp\)"},
      {"gr\xC3\xBC\xC3\x9F\xE2\x82\xAC\xF0\x9F\x98\x80.bmp",
       "gr\xC3\xBC\xC3\x9F\xE2\x82\xAC\xF0\x9F\x98\x80.bmp"},
      {"gr\xFC\xDF.bmp", "gr\xC3\xBC\xC3\x9F.bmp"},
      {"\x80\x8A\x9F\xC3", "\xE2\x82\xAC\xC5\xA0\xC5\xB8\xC3\x83"},
      {"\x80", "\xE2\x82\xAC"},
      {std::string("a.bmp\0rest", 10), "a.bmp"}};
  for (const auto& [sStored, sName] : names)
    EXPECT_EQ(Textures(TriangleWith("MeshMaterialList { 1; 1; 0; Material { " + sMaterial +
                                    "TextureFilename { \"" + sStored + "\"; } } }")),
              std::vector<std::string>{sName});
}

/// Why a file is refused.
std::string Refusal(const std::string& sBytes) {
  try {
    const LoadedMesh loaded(sBytes);
    return "it is read";
  } catch (const platform::D3DError& e) {
    EXPECT_EQ(e.lNumber, platform::D3DXERR_INVALIDDATA);
    EXPECT_THAT(e.what(), HasSubstr("/model.x: "));
    return e.what();
  }
}

std::string Repeated(int nTimes, const std::string& s) {
  std::string sAll;
  for (int i = 0; i < nTimes; ++i) sAll += s;
  return sAll;
}

std::string ListOf(const std::string& sList) {
  return TriangleWith("MeshMaterialList { " + sList + " }");
}

TEST(XReader, TellsWhatIsWrongWithAText) {
  const std::string sFrame = "Frame { FrameTransformMatrix { ";
  const std::string sLarge = "1e18,0,0,0, 0,1e18,0,0, 0,0,1e18,0, 0,0,0,1 ";
  const std::vector<std::pair<std::string, std::string>> files = {
      {"", "it is no X file"},
      {"xof 0303txt 003", "it is no X file"},
      {"xaf 0303txt 0032" + sTriangle, "it is no X file"},
      {"xof 0304txt 0032" + sTriangle, "version"},
      {"xof 0303tex 0032" + sTriangle, "form"},
      {"xof 0303txt 0016" + sTriangle, "neither 32 nor 64 bits"},
      {sHead, "it has no faces"},
      {sHead + "Mesh { 0; 0; }", "it has no faces"},
      {sHead + "Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 0; }", "it has no faces"},
      {sHead + sTriangle.substr(0, sTriangle.size() - 1), "the file ends inside an object"},
      {sHead + "Unknown { {", "the file ends inside an object"},
      {sHead + "Mesh {\n 3; 0;0;0;, 1;0;0;,\n 0;1;}", "line 4: a number is expected, not \"}\""},
      {sHead + "Mesh { 1; 0;0", "a count is larger than the rest"},
      {sHead + "Mesh { 1; 0;0;0; 1; 3;0;0", "a count is larger than the rest"},
      {sHead + "Mesh { 1431655766; 0;0;0;" + sTriangle, "a count is larger than the rest"},
      {sHead + "Mesh { 3; 0;0;0;0;0;0;0;0;0; 1; 4294967295; 0;0;0; }", "a count is larger"},
      {sHead + "Mesh { -1; }", "a whole number is expected, not \"-1\""},
      {sHead + "Mesh { 4294967296; }", "a whole number is expected, not \"4294967296\""},
      {sHead + "Mesh { 3.5; }", "a whole number is expected, not \"3.5\""},
      {sHead + "Mesh { 1; nan;0;0; 0; }", "out of range"},
      {sHead + "Mesh { 1; -inf;0;0; 0; }", "out of range"},
      {sHead + "Mesh { 1; 0;2e18;0; 0; }", "out of range"},
      {sHead + "Mesh { 1; 0;-1e999;0; 0; }", "a number is expected, not \"-1e999\""},
      {sHead + "Mesh { 1; -1.#IND;0;0; 0; }", "a number is expected, not \"-1.#IND\""},
      {sHead + "Mesh { 1; +-1;0;0; 0; }", "a number is expected, not \"+-1\""},
      {sHead + "Mesh { 1; 1x\n;0;0; 0; }", "line 2: a number is expected, not \"1x\""},
      {sHead + "Mesh { 1; 0;0;0; 1; 2; 0,0; 0;0; }", "fewer than three corners"},
      {sHead + "Mesh { 1; 0;0;0; 1; 3; 0,0,1; }", "a corner that there is not"},
      {TriangleWith("MeshNormals { 1; 0;0;1; 1; 3; 0,1,0; }"), "a corner that there is not"},
      {TriangleWith("MeshNormals { 1; 0;0;1; 1; 4; 0,0,0,0; }"), "the faces of the normals"},
      {TriangleWith("MeshNormals { 1; 0;0;1; 2; 3; 0,0,0; 3; 0,0,0; }"),
       "the faces of the normals"},
      {TriangleWith("MeshTextureCoords { 9; 0;0; }"), "a count is larger"},
      {TriangleWith("MeshTextureCoords { 3; 0;0; 0;0; 0;1e19; }"), "out of range"},
      {ListOf("1; 9; 0;"), "a count is larger"},
      {ListOf("2; 1; 1; Material { " + sMaterial + " }"), "a material that there is not"},
      {ListOf("1; 1; 1;"), "a material that there is not"},
      {ListOf("1; 1; 0; { Red }"), "no material that stands before it"},
      {ListOf("1; 1; 0; { Red Green }"), "a reference is a name"},
      {ListOf("1; 0; Material { 1;0;0; }"), "a number is expected, not \"}\""},
      {ListOf("1; 0; Material { " + sMaterial + " TextureFilename { a.bmp; } }"),
       "a text is expected, not \"a.bmp\""},
      {sHead + "Material A { " + sMaterial + "} " +
           MeshWith("MeshMaterialList { 1; 0; " + Repeated(65537, "{A}") + "}"),
       "too many materials"},
      {TriangleWith("1.0;"), "a \"{\" is expected"},
      {TriangleWith("\"text\""), "there has to be an object"},
      {sHead + sTriangle + "}", "there has to be the name of a type"},
      {sHead + "A \"b\" {}", "a \"{\" is expected"},
      {sHead + "A { \"b\n\" }", "line 2: a text has no closing quote"},
      {sHead + "A { <b\n> }", "a GUID has no closing"},
      {sHead + Repeated(257, "Frame {") + sTriangle + Repeated(257, "}"), "nested too deeply"},
      {sHead + Repeated(100000, "Frame{"), "nested too deeply"},
      {sHead + Repeated(100000, "A{"), "the file ends inside an object"},
      {sHead + "Frame { FrameTransformMatrix { 1,0,0,0 } }", "a number is expected"},
      {sHead + Repeated(3, sFrame + sLarge + "}") + sTriangle + "}}}", "matrices are out of range"},
      {sHead + sFrame + "1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,0 }" + sTriangle + "}",
       "moves a vertex out of range"},
  };
  for (const auto& [sBytes, sWhy] : files)
    EXPECT_THAT(Refusal(sBytes), HasSubstr(sWhy)) << sBytes.substr(0, 200);
}

TEST(XReader, RefusesWhatWouldTakeForever) {
  std::string sGrid = "Mesh G { 3000; ";
  sGrid += Repeated(9000, "0;") + "1; 3000; " + Repeated(3000, "0,") + "}";
  EXPECT_THAT(Refusal(sHead + sGrid + "Frame { " + Repeated(60000, "{G}") + "}"),
              HasSubstr("too many vertices"));
  const std::string sNormals = "MeshNormals { 9000; " + Repeated(27000, "0;") + "1; 3; 0,0,0; }";
  EXPECT_THAT(Refusal(sHead + "Mesh G" + MeshWith(sNormals).substr(4) + "Frame { " +
                      Repeated(60000, "{G}") + "}"),
              HasSubstr("too many vertices"));
  EXPECT_THAT(
      Refusal(sHead + "Mesh G" + sTriangle.substr(4) + "Frame { " + Repeated(70000, "{G}") + "}"),
      HasSubstr("too many meshes"));
  const std::string sBomb = sHead.substr(0, 8) + "tzip0032" + Repeated(4, std::string(1, '\0'));
  EXPECT_THAT(Refusal(sBomb + Repeated(2049, MszipBlock(std::string(32768, ' '), ""))),
              HasSubstr("the uncompressed file is too long"));
}

TEST(XReader, TellsWhatIsWrongWithABinaryFile) {
  const std::string sModel = "Mesh { 3; 0.0;0.0;0.0; 1.0;0.0;0.0; 0.0;1.0;0.0; 1; 3; 0,1,2; }";
  const std::string sGood = Binary(sModel);
  const auto with = [&](std::size_t nAt, const std::string& s) {
    return std::string(sGood).replace(nAt, s.size(), s);
  };
  // 16: the name (10), 26: "{" (2), 28: 3 (10), 38: nine floats (42), 80: five indexes (26), "}"
  ASSERT_EQ(sGood.size(), 108U);
  const std::vector<std::pair<std::string, std::string>> files = {
      {with(16, "\x63"), "byte 16: there is no such code as 99"},
      {with(18, std::string("\xFF\xFF\xFF\xFF")), "the file is cut off"},
      {with(26, "\x0B"), "a \"{\" is expected"},
      {with(30, "\x15"), "a list is longer"},
      {with(34, "\x20"), "byte 34: a count is larger"},
      {with(40, "\x12"), "a list is longer"},
      {with(44, std::string("\0\0\xC0\x7F", 4)), "byte 44: a number is out of range"},
      {with(44, std::string("\0\0\x80\xFF", 4)), "byte 44: a number is out of range"},
      {with(98, "\x03"), "byte 98: a face has a corner"},
      {with(106, "\x0E"), "there has to be an object"},
      {sGood.substr(0, 106), "the file ends inside an object"},
      {sGood.substr(0, 17), "the file is cut off"},
      {ToBinary(sHead + sModel, 8).replace(40, 1, "\x0F"), "a list is longer"},
      {Binary("Mesh { \"3\" }"), "a whole number is expected, not \"3\""},
      {Binary("Mesh { 3.0; }"), "a whole number is expected, not a number"},
  };
  for (const auto& [sBytes, sWhy] : files) EXPECT_THAT(Refusal(sBytes), HasSubstr(sWhy));
}

TEST(XReader, TellsWhatIsWrongWithACompressedFile) {
  const std::string sGood = Compress(sHouse);
  // 16: the size of all (4), 20: the size of the block, 22: its compressed size, 24: "CK"
  const auto with = [&](std::size_t nAt, const std::string& s) {
    return std::string(sGood).replace(nAt, s.size(), s);
  };
  const char cSize = sGood[20];
  const std::vector<std::pair<std::string, std::string>> files = {
      {sGood.substr(0, 19), "the compressed data are cut off"},
      {sGood.substr(0, 20), "the compressed data are cut off"},
      {sGood.substr(0, 100), "the compressed data are cut off"},
      {with(18, "\x01"), "the compressed data are cut off"},
      {with(20, std::string(1, static_cast<char>(cSize + 1))), "damaged"},
      {with(20, std::string(1, static_cast<char>(cSize - 1))), "damaged"},
      {with(20, std::string("\0\0", 2)), "damaged"},
      {with(20, "\x01\x80"), "damaged"},
      {with(24, "c"), "damaged"},
      {with(26, "\xFF"), "damaged"},
      {sGood + std::string("\1\0\2\0CK", 6), "damaged"},
      {sGood + std::string("\1\0\0\0", 4), "damaged"},
  };
  for (const auto& [sBytes, sWhy] : files) EXPECT_THAT(Refusal(sBytes), HasSubstr(sWhy));
  LoadedMesh padded(sGood + std::string(3, '\0'));
  EXPECT_EQ(padded.mesh->GetNumFaces(), 9U);
}

TEST(XReader, RefusesWhatIsNoFile) {
  LoadedMesh loaded(sHouse);
  std::filesystem::remove(loaded.folder / "model.x");
  EXPECT_THROW(loaded.Load(0), platform::D3DError);
  std::filesystem::create_directory(loaded.folder / "model.x");
  EXPECT_THROW(loaded.Load(0), platform::D3DError);
}

}  // namespace
}  // namespace quillorbit::test
