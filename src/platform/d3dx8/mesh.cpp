#include "platform/d3dx8/mesh.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/d3dx8/mesh_geometry.h"
#include "platform/d3dx8/whole_file.h"
#include "platform/d3dx8/x_error.h"
#include "platform/d3dx8/x_file.h"
#include "platform/d3dx8/x_reader.h"

namespace quillorbit::d3dx8 {
namespace {

using namespace platform;

constexpr std::uint32_t nVertexFormat = D3DFVF_XYZ | D3DFVF_NORMAL | D3DFVF_TEX1;
using MaterialPointers = std::vector<std::shared_ptr<const XMaterial>>;

class MaterialBuffer : public D3DXBuffer {
 public:
  explicit MaterialBuffer(MaterialPointers materials) : m_materials(std::move(materials)) {}

  static const XMaterial& At(const D3DXBuffer& buffer, std::int32_t lIndex) {
    const auto* pMaterials = dynamic_cast<const MaterialBuffer*>(&buffer);
    if (pMaterials == nullptr || lIndex < 0 ||
        static_cast<std::size_t>(lIndex) >= pMaterials->m_materials.size())
      throw D3DError(D3DERR_INVALIDCALL, "there is no such material");
    return *pMaterials->m_materials[static_cast<std::size_t>(lIndex)];
  }

 private:
  MaterialPointers m_materials;
};

/// Where a subset's triangles are in the index buffer, and which range of the vertices they use.
struct Subset {
  std::uint32_t nFirstTriangle = 0, nTriangles = 0;
  std::uint32_t nMinVertex = 0xFFFFFFFF, nMaxVertex = 0;
};

std::vector<Subset> FindSubsets(const std::vector<MeshTriangle>& triangles) {
  std::vector<Subset> subsets(std::size_t{triangles.back().iSubset} + 1);
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    const MeshTriangle& t = triangles[i];
    Subset& subset = subsets[t.iSubset];
    if (subset.nTriangles++ == 0) subset.nFirstTriangle = static_cast<std::uint32_t>(i);
    subset.nMinVertex = std::min({subset.nMinVertex, t.a, t.b, t.c});
    subset.nMaxVertex = std::max({subset.nMaxVertex, t.a, t.b, t.c});
  }
  return subsets;
}

/// Fills a vertex or index buffer.
template <class Buffer, class T>
void Fill(Buffer& buffer, const std::vector<T>& values) {
  std::memcpy(buffer.Lock(), values.data(), values.size() * sizeof(T));
  buffer.Unlock();
}

template <class Index>
std::vector<Index> Indexes(const std::vector<MeshTriangle>& triangles) {
  std::vector<Index> indexes;
  indexes.reserve(3 * triangles.size());
  for (const MeshTriangle& t : triangles)
    for (const std::uint32_t i : {t.a, t.b, t.c}) indexes.push_back(static_cast<Index>(i));
  return indexes;
}

class Mesh : public ID3DXMesh {
 public:
  Mesh(const MeshGeometry& geometry, std::uint32_t Options,
       const std::shared_ptr<IDirect3DDevice8>& Device)
      : m_device(Device),
        m_nFaces(static_cast<std::uint32_t>(geometry.triangles.size())),
        m_nVertices(static_cast<std::uint32_t>(geometry.vertices.size())),
        m_subsets(FindSubsets(geometry.triangles)) {
    const bool bManaged = (Options & D3DXMESH_MANAGED) == D3DXMESH_MANAGED;
    const D3DPOOL pool = bManaged ? D3DPOOL_MANAGED : D3DPOOL_DEFAULT;
    m_vertices = Device->CreateVertexBuffer(m_nVertices * std::uint32_t{sizeof(MeshVertex)}, 0,
                                            nVertexFormat, pool);
    Fill(*m_vertices, geometry.vertices);
    if ((Options & D3DXMESH_32BIT) != 0 || m_nVertices > 65535)
      MakeIndexes(Indexes<std::uint32_t>(geometry.triangles), D3DFMT_INDEX32, pool);
    else
      MakeIndexes(Indexes<std::uint16_t>(geometry.triangles), D3DFMT_INDEX16, pool);
  }

  void DrawSubset(std::uint32_t AttribId) override {
    if (AttribId >= m_subsets.size() || m_subsets[AttribId].nTriangles == 0) return;
    const Subset& subset = m_subsets[AttribId];
    m_device->SetVertexShader(nVertexFormat);
    m_device->SetStreamSource(0, m_vertices, sizeof(MeshVertex));
    m_device->SetIndices(m_indices, 0);
    m_device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, subset.nMinVertex,
                                   subset.nMaxVertex - subset.nMinVertex + 1,
                                   3 * subset.nFirstTriangle, subset.nTriangles);
  }
  [[nodiscard]] std::uint32_t GetNumFaces() const override { return m_nFaces; }
  [[nodiscard]] std::uint32_t GetNumVertices() const override { return m_nVertices; }

 private:
  template <class Index>
  void MakeIndexes(const std::vector<Index>& indexes, D3DFORMAT format, D3DPOOL pool) {
    m_indices = m_device->CreateIndexBuffer(
        static_cast<std::uint32_t>(indexes.size() * sizeof(Index)), 0, format, pool);
    Fill(*m_indices, indexes);
  }

  std::shared_ptr<IDirect3DDevice8> m_device;
  std::uint32_t m_nFaces, m_nVertices;
  std::vector<Subset> m_subsets;
  std::shared_ptr<IDirect3DVertexBuffer8> m_vertices;
  std::shared_ptr<IDirect3DIndexBuffer8> m_indices;
};

MeshGeometry ReadGeometry(const std::string& sFile) {
  std::string sBytes = ReadWholeFile(sFile, nModelFileLimit);
  try {
    return BuildGeometry(ReadXModel(std::move(sBytes)));
  } catch (const D3DError& e) {
    RefuseModel(sFile + ": " + e.what());
  }
}

}  // namespace

std::shared_ptr<ID3DXMesh> LoadMeshFromX(const std::string& sFile, std::uint32_t Options,
                                         const std::shared_ptr<IDirect3DDevice8>& Device,
                                         std::shared_ptr<D3DXBuffer>& Materials,
                                         std::int32_t& lMaterialCount) {
  MeshGeometry geometry = ReadGeometry(sFile);
  auto mesh = std::make_shared<Mesh>(geometry, Options, Device);
  const auto nMaterials = static_cast<std::int32_t>(geometry.materials.size());
  Materials = std::make_shared<MaterialBuffer>(std::move(geometry.materials));
  lMaterialCount = nMaterials;
  return mesh;
}

D3DMATERIAL8 BufferGetMaterial(const D3DXBuffer& Materials, std::int32_t lIndex) {
  return MaterialBuffer::At(Materials, lIndex).material;
}

std::string BufferGetTextureName(const D3DXBuffer& Materials, std::int32_t lIndex) {
  return MaterialBuffer::At(Materials, lIndex).sTexture;
}

}  // namespace quillorbit::d3dx8
