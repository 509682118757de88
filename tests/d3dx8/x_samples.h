#pragma once

#define ZLIB_CONST
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <zlib.h>

#include "fakes/direct3d8.h"
#include "platform/d3dx8/mesh.h"
#include "support/child_process.h"

// A model for the tests, its other forms, and a mesh with what became of it on the device.

namespace quillorbit::test {

/// A floating-point number has a point in it, so that ToBinary() can tell it from a whole one.
inline const std::string sHouse = R"(xof 0302txt 0032
template Mesh { <3D82AB44-62DA-11cf-AB39-0020AF71E433>
  DWORD nVertices ; array Vector vertices [ nVertices ] ; [ . . . ] }
Header { 1; 0; 1; }
# Materials may stand before the meshes
Material Red {
  1.0; 0.0; 0.0; 1.0;; 8.0; 0.5; 0.25; 0.125;; 0.0; 0.0; 0.25;;
  TextureFilename { "skin\\red.bmp"; }
}
Frame Root {
  FrameTransformMatrix { // twice as wide, then moved
    2.0, 0.0, 0.0, 0.0,  0.0, 1.0, 0.0, 0.0,  0.0, 0.0, 1.0, 0.0,  10.0, 0.0, 0.0, 1.0;; }
  Frame Inner {
    Mesh Wall {
      6; 0.0; 0.0; 0.0;, 1.0; 0.0; 0.0;, 1.0; 1.0; 0.0;, 0.0; 1.0; 0.0;, 0.5; 2.0; 0.0;, 0.0; 0.0; 1.0;;
      2; 4; 0, 1, 2, 3;, 5; 0, 1, 2, 4, 3;;
      MeshNormals {
        3; 0.0; 0.0; 1.0;, 1.0; 1.0; 0.0;, 0.0; 0.0; 1.0;;
        2; 4; 0, 0, 2, 1;, 5; 0, 1, 1, 1, 1;;
      }
      MeshTextureCoords {
        6; 0.0; 0.0;, 1.0; 0.0;, 1.0; 1.0;, 0.0; 1.0;, 0.5; 0.25;, 0.5; 0.5;;
      }
      MeshMaterialList {
        2; 2; 1, 0;;
        { Red }
        Material Blue { 0.0; 0.0; 1.0; 0.5;; 2.0; 0.0; 0.0; 0.0;; 0.0; 0.0; 0.0;;
          TextureFilename { "blue.bmp"; } }
      }
    }
    FrameTransformMatrix { // a quarter turn about z, then back
      0.0, 1.0, 0.0, 0.0, -1.0, 0.0, 0.0, 0.0,  0.0, 0.0, 1.0, 0.0,  0.0, 0.0, 3.0, 1.0;; }
  }
}
Frame Second {
  Mesh Plate {
    3; 0.0; 0.0; 0.0;, 1.0; 0.0; 0.0;, 0.0; 1.0; 0.0;;
    2; 3; 0, 1, 2;, 3; 0, 2, 1;;
    MeshMaterialList { 1; 1; 0;;
      Material { 0.0; 1.0; 0.0; 1.0;; 0.0; 0.0; 0.0; 0.0;; 0.0; 0.0; 0.0;; } }
  }
}
Mesh Flag {
  4; 0.0; 0.0; 5.0;, 0.0; 2.0; 5.0;, 3.0; 2.0; 5.0;, 3.0; 0.0; 5.0;;
  1; 4; 0, 1, 2, 3;;
}
AnimationSet { Animation { { Inner } AnimationKey { 0; 1; 0; 4; 1.0, 0.0, 0.0, 0.0;;; } } }
)";

/// Writes the tokens of a text one by one as the binary form has them.
class BinaryWriter {
 public:
  explicit BinaryWriter(std::size_t nFloatSize) : m_nFloatSize(nFloatSize) {}

  std::string Convert(const std::string& sText) {
    m_s = sText.substr(0, 8) + "bin " + (m_nFloatSize == 8 ? "0064" : "0032");
    for (m_i = 16; m_i < sText.size();) Token(sText);
    EndList();
    return m_s;
  }

 private:
  void Token(const std::string& t) {
    const char c = t[m_i];
    if (c == '#' || t.compare(m_i, 2, "//") == 0) {
      m_i = t.find('\n', m_i);
    } else if (std::strchr(" \n;,", c) != nullptr) {
      ++m_i;
    } else if (c == '"' || c == '<') {
      const std::size_t nEnd = t.find(c == '"' ? '"' : '>', m_i + 1);
      Quoted(c, t.substr(m_i + 1, nEnd - m_i - 1));
      m_i = nEnd + 1;
    } else {
      const bool bBrace = c == '{' || c == '}';
      const std::size_t nWordEnd = std::min(t.find_first_of(" \n;,{}\"<", m_i), t.size());
      const std::size_t nEnd = bBrace ? m_i + 1 : nWordEnd;
      Word(t.substr(m_i, nEnd - m_i));
      m_i = nEnd;
    }
  }

  void Quoted(char c, const std::string& s) {
    EndList();
    if (c == '"') {
      Counted(2, s);
      Number(20, 2);
      return;
    }
    Number(5, 2);
    for (const auto& [nAt, nDigits] : {std::pair{0U, 8U}, {9U, 4U}, {14U, 4U}})
      Number(std::stoul(s.substr(nAt, nDigits), nullptr, 16), nDigits / 2);
    for (const std::size_t nAt : {19U, 21U, 24U, 26U, 28U, 30U, 32U, 34U})
      Number(std::stoul(s.substr(nAt, 2), nullptr, 16), 1);
  }

  void Word(const std::string& s) {
    static const std::map<std::string, unsigned> codes = {
        {"{", 10}, {"}", 11},        {"[", 14},     {"]", 15},
        {".", 18}, {"template", 31}, {"DWORD", 41}, {"array", 52}};
    if (std::isdigit(static_cast<unsigned char>(s[0])) != 0 || s[0] == '-')
      return Value(s, s.find('.') != std::string::npos);
    EndList();
    if (const auto i = codes.find(s); i != codes.end()) return Number(i->second, 2);
    Counted(1, s);
  }

  void Value(const std::string& s, bool bFloat) {
    if (m_nValues > 0 && bFloat != m_bFloats) EndList();
    m_bFloats = bFloat;
    ++m_nValues;
    const std::string sBefore = std::exchange(m_s, m_list);
    if (!bFloat)
      Number(std::stoul(s), 4);
    else if (m_nFloatSize == 8)
      Number(std::bit_cast<std::uint64_t>(std::stod(s)), 8);
    else
      Number(std::bit_cast<std::uint32_t>(std::stof(s)), 4);
    m_list = std::exchange(m_s, sBefore);
  }
  void EndList() {
    if (m_nValues == 0) return;
    Number(m_bFloats ? 7 : 6, 2);
    Number(m_nValues, 4);
    m_s += std::exchange(m_list, {});
    m_nValues = 0;
  }

  void Counted(unsigned nCode, const std::string& s) {
    Number(nCode, 2);
    Number(s.size(), 4);
    m_s += s;
  }
  void Number(std::uint64_t n, std::size_t nBytes) {
    for (; nBytes > 0; --nBytes, n >>= 8) m_s += static_cast<char>(n & 0xFF);
  }

  std::size_t m_nFloatSize;
  std::string m_s, m_list;
  std::size_t m_i = 0, m_nValues = 0;
  bool m_bFloats = false;
};

inline std::string ToBinary(const std::string& sText, std::size_t nFloatSize = 4) {
  return BinaryWriter(nFloatSize).Convert(sText);
}

/// A block of compressed data. The dictionary is what stands before it.
inline std::string MszipBlock(const std::string& sBlock, const std::string& sDictionary) {
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY);
  const auto bytes = [](const std::string& s) { return reinterpret_cast<const Bytef*>(s.data()); };
  if (!sDictionary.empty())
    deflateSetDictionary(&stream, bytes(sDictionary), static_cast<uInt>(sDictionary.size()));
  std::string out(sBlock.size() + 1000, '\0');
  stream.next_in = bytes(sBlock);
  stream.avail_in = static_cast<uInt>(sBlock.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::logic_error("deflate");
  out.resize(stream.total_out);
  deflateEnd(&stream);
  std::string s;
  for (const std::size_t n : {sBlock.size(), out.size() + 2})
    s += {static_cast<char>(n & 0xFF), static_cast<char>(n >> 8)};
  return s + "CK" + out;
}

/// The compressed form of a text or binary file.
inline std::string Compress(const std::string& sFile) {
  std::string s = sFile;
  s.replace(8, 4, sFile.compare(8, 4, "txt ") == 0 ? "tzip" : "bzip");
  const std::string sBody = s.substr(16);
  s.resize(16);
  for (int i = 0; i < 4; ++i) s += static_cast<char>(sFile.size() >> 8 * i & 0xFF);
  for (std::size_t n = 0; n < sBody.size(); n += 32768) {
    const std::size_t nBefore = std::min<std::size_t>(n, 32768);
    s += MszipBlock(sBody.substr(n, 32768), sBody.substr(n - nBefore, nBefore));
  }
  return s;
}

struct Vertex {
  float x, y, z, nx, ny, nz, u, v;
  bool operator==(const Vertex&) const = default;
};

/// Loads a file, and has the mesh with all it did on a device that records.
struct LoadedMesh {
  explicit LoadedMesh(const std::string& sBytes, std::uint32_t nOptions = 0) {
    Write(sBytes);
    Load(nOptions);
  }
  /// Makes a new file: some systems wait for the disk when one is written anew.
  void Write(const std::string& sBytes) const {
    std::filesystem::remove(folder / "model.x");
    std::ofstream(folder / "model.x", std::ios::binary) << sBytes;
  }
  void Load(std::uint32_t nOptions) {
    mesh = d3dx8::LoadMeshFromX(folder / "model.x", nOptions, device, materials, lMaterials);
    created = log.Take();
  }

  /// What DrawSubset does on the device.
  std::vector<std::string> Draw(std::uint32_t iSubset) {
    mesh->DrawSubset(iSubset);
    return log.Take();
  }
  std::vector<Vertex> Vertices() {
    return Copy<Vertex>(dynamic_cast<fakes::FakeVertexBuffer&>(*device->vertices).bytes);
  }
  std::vector<std::uint32_t> Indexes() {
    const auto& bytes = dynamic_cast<fakes::FakeIndexBuffer&>(*device->indices).bytes;
    if (bytes.size() / 4 == std::size_t{3} * mesh->GetNumFaces()) return Copy<std::uint32_t>(bytes);
    const auto shorts = Copy<std::uint16_t>(bytes);
    return {shorts.begin(), shorts.end()};
  }
  template <class T>
  static std::vector<T> Copy(const std::vector<std::byte>& bytes) {
    std::vector<T> values(bytes.size() / sizeof(T));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
  }

  TemporaryFolder folder;
  fakes::CallLog log;
  std::shared_ptr<fakes::FakeDirect3DDevice> device =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  std::shared_ptr<platform::D3DXBuffer> materials;
  std::int32_t lMaterials = -1;
  std::shared_ptr<platform::ID3DXMesh> mesh;
  std::vector<std::string> created;
};

}  // namespace quillorbit::test
