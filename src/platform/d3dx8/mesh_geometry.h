#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/d3dx8/x_model.h"

// A model as one mesh of triangles.

namespace quillorbit::d3dx8 {

/// A vertex of the format XYZ, NORMAL, TEX1.
struct MeshVertex {
  platform::D3DVECTOR position, normal;
  float u, v;
};
static_assert(sizeof(MeshVertex) == 32);

struct MeshTriangle {
  std::uint32_t a, b, c;  ///< vertices
  std::uint32_t iSubset;
};

struct MeshGeometry {
  std::vector<MeshVertex> vertices;
  std::vector<MeshTriangle> triangles;  ///< ordered by their subsets, then as in the file
  std::vector<std::shared_ptr<const XMaterial>> materials;  ///< one for each subset, or none at all
};

/// Puts the meshes of a model together where their frames move them.
///
/// - A face of more than three corners becomes a fan around its first one.
/// - The first vertices of a mesh are its positions, each with the normal of its first corner.
///   After them come the positions that have further normals, once for each, by position and then
///   by normal. Without normals these are zero.
/// - Frames transform positions as the pipeline does, and normals by the inverse transpose, to
///   length 1. The corners of a face keep their order also where a frame mirrors: drawing with the
///   frame's matrix would not change the order either, and exporters rely on that.
/// - The materials of the meshes stand one after the other. A mesh without materials has one white
///   one if another mesh has some.
///
/// Throws D3DError (D3DXERR_INVALIDDATA) when there are no faces, more than 1048576 positions
/// and corners or that many normals, more than 4096 materials, or a position beyond 1e18.
[[nodiscard]] MeshGeometry BuildGeometry(const XModel& model);

}  // namespace quillorbit::d3dx8
