#include "platform/d3dx8/mesh_geometry.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "platform/d3dx8/mesh_transform.h"
#include "platform/d3dx8/x_error.h"

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DVECTOR;

constexpr std::size_t nVertexLimit = 1 << 20;
constexpr std::uint32_t iNone = 0xFFFFFFFF;

/// For each vector the index of the first one that equals it.
std::vector<std::uint32_t> Representatives(const std::vector<D3DVECTOR>& vectors) {
  struct Entry {
    [[nodiscard]] auto Key() const { return std::tie(v.x, v.y, v.z); }
    D3DVECTOR v;
    std::uint32_t i;
  };
  std::vector<Entry> order;
  order.reserve(vectors.size());
  for (const D3DVECTOR& v : vectors) order.push_back({v, static_cast<std::uint32_t>(order.size())});
  std::sort(order.begin(), order.end(),
            [](const Entry& a, const Entry& b) { return a.Key() < b.Key(); });
  std::vector<std::uint32_t> representatives(vectors.size());
  const Entry* pFirst = nullptr;  // of those that are equal
  for (const Entry& entry : order) {
    if (pFirst == nullptr || pFirst->Key() != entry.Key()) pFirst = &entry;
    representatives[entry.i] = pFirst->i;
  }
  return representatives;
}

/// Adds one mesh to the geometry.
class PartBuilder {
 public:
  PartBuilder(const XPart& part, MeshGeometry& geometry)
      : m_mesh(*part.mesh),
        m_geometry(geometry),
        m_nFirstVertex(geometry.vertices.size()),
        m_representatives(Representatives(m_mesh.normals)),
        m_firstNormals(m_mesh.positions.size(), iNone) {
    if (part.transform) m_transform.emplace(*part.transform);
  }

  void Build(std::uint32_t iFirstMaterial) {
    FindNormals();
    for (std::uint32_t i = 0; i < m_mesh.positions.size(); ++i) AddVertex(i, m_firstNormals[i]);
    for (const auto& [iPosition, iNormal] : m_others) AddVertex(iPosition, iNormal);
    std::uint32_t iCorner = 0;
    for (std::size_t iFace = 0; iFace < m_mesh.faces.ends.size(); ++iFace) {
      const std::uint32_t iSubset =
          iFirstMaterial + (m_mesh.materials.empty() ? 0 : m_mesh.faceMaterials[iFace]);
      AddFace(iCorner, m_mesh.faces.ends[iFace], iSubset);
      iCorner = m_mesh.faces.ends[iFace];
    }
  }

 private:
  /// A position and its normal, by their indexes.
  using Pair = std::pair<std::uint32_t, std::uint32_t>;

  void FindNormals() {
    if (m_mesh.normalFaces.corners.empty()) return;
    for (std::size_t i = 0; i < m_mesh.faces.corners.size(); ++i) {
      const Pair pair = PairAt(i);
      std::uint32_t& iFirst = m_firstNormals[pair.first];
      if (iFirst == iNone) iFirst = pair.second;
      if (iFirst != pair.second) m_others.push_back(pair);
    }
    std::sort(m_others.begin(), m_others.end());
    m_others.erase(std::unique(m_others.begin(), m_others.end()), m_others.end());
  }

  [[nodiscard]] Pair PairAt(std::size_t iCorner) const {
    return {m_mesh.faces.corners[iCorner], m_representatives[m_mesh.normalFaces.corners[iCorner]]};
  }

  void AddVertex(std::uint32_t iPosition, std::uint32_t iNormal) {
    MeshVertex vertex{};
    vertex.position = m_mesh.positions[iPosition];
    if (iNormal != iNone) vertex.normal = m_mesh.normals[iNormal];
    if (m_transform) {
      vertex.position = m_transform->Position(vertex.position);
      vertex.normal = m_transform->Normal(vertex.normal);
    }
    vertex.u = m_mesh.textureCoords[iPosition].u;
    vertex.v = m_mesh.textureCoords[iPosition].v;
    m_geometry.vertices.push_back(vertex);
  }

  void AddFace(std::uint32_t iCorner, std::uint32_t iEnd, std::uint32_t iSubset) {
    const std::uint32_t a = Vertex(iCorner);
    std::uint32_t b = Vertex(iCorner + 1);
    for (std::uint32_t i = iCorner + 2; i < iEnd; ++i) {
      const std::uint32_t c = Vertex(i);
      m_geometry.triangles.push_back({a, b, c, iSubset});
      b = c;
    }
  }

  /// The vertex for a corner.
  [[nodiscard]] std::uint32_t Vertex(std::uint32_t iCorner) const {
    std::size_t iVertex = m_nFirstVertex + m_mesh.faces.corners[iCorner];
    if (!m_mesh.normalFaces.corners.empty()) {
      const Pair pair = PairAt(iCorner);
      if (m_firstNormals[pair.first] != pair.second) {
        const auto i = std::lower_bound(m_others.begin(), m_others.end(), pair);
        iVertex = m_nFirstVertex + m_mesh.positions.size() +
                  static_cast<std::size_t>(i - m_others.begin());
      }
    }
    return static_cast<std::uint32_t>(iVertex);
  }

  const XMesh& m_mesh;
  MeshGeometry& m_geometry;
  std::size_t m_nFirstVertex;
  std::optional<MeshTransform> m_transform;
  std::vector<std::uint32_t> m_representatives;
  std::vector<std::uint32_t> m_firstNormals;  ///< for each position
  std::vector<Pair> m_others;                 ///< the pairs with further normals
};

/// Adds the materials of a mesh. Returns the index of the first.
std::uint32_t AddMaterials(const XMesh& mesh, MeshGeometry& geometry) {
  const std::size_t iFirst = geometry.materials.size();
  if (mesh.materials.empty()) {
    const auto white = std::make_shared<XMaterial>();
    white->material.Diffuse = {1, 1, 1, 1};
    geometry.materials.push_back(white);
  }
  if (mesh.materials.size() > nMaterialLimit - std::min(nMaterialLimit, geometry.materials.size()))
    RefuseModel("there are more than 4096 materials");
  geometry.materials.insert(geometry.materials.end(), mesh.materials.begin(), mesh.materials.end());
  return static_cast<std::uint32_t>(iFirst);
}

/// Refuses a model that could become too large, or take too long: a corner adds a vertex and a
/// triangle at most, and a mesh may stand in many frames.
void CheckSize(const XModel& model) {
  std::size_t nVertices = 0, nNormals = 0;
  for (const XPart& part : model) {
    nVertices += part.mesh->positions.size() + part.mesh->faces.corners.size();
    nNormals += part.mesh->normals.size();
    if (nVertices > nVertexLimit || nNormals > nVertexLimit)
      RefuseModel("there are more than 1048576 vertices or normals");
  }
}

}  // namespace

MeshGeometry BuildGeometry(const XModel& model) {
  CheckSize(model);
  MeshGeometry geometry;
  const bool bMaterials = std::any_of(model.begin(), model.end(),
                                      [](const XPart& p) { return !p.mesh->materials.empty(); });
  for (const XPart& part : model) {
    const std::uint32_t iMaterial = bMaterials ? AddMaterials(*part.mesh, geometry) : 0;
    PartBuilder(part, geometry).Build(iMaterial);
  }
  if (geometry.triangles.empty()) RefuseModel("it has no faces");
  std::stable_sort(
      geometry.triangles.begin(), geometry.triangles.end(),
      [](const MeshTriangle& a, const MeshTriangle& b) { return a.iSubset < b.iSubset; });
  return geometry;
}

}  // namespace quillorbit::d3dx8
