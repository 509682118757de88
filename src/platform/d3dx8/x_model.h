#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/direct3d8.h"

// What an X file says of a model, checked: every index is one of something that is there.

namespace quillorbit::d3dx8 {

/// How many materials a model may have. Each frame sets and draws all of them.
inline constexpr std::size_t nMaterialLimit = 4096;

struct XMaterial {
  platform::D3DMATERIAL8 material{};
  std::string sTexture;  ///< UTF-8; empty for none
};

/// Faces of at least three corners; each corner is an index.
struct XFaces {
  std::vector<std::uint32_t> corners;  ///< those of all faces
  std::vector<std::uint32_t> ends;     ///< where in `corners` each face ends
};

struct XTextureCoordinates {
  float u = 0, v = 0;
};

struct XMesh {
  std::vector<platform::D3DVECTOR> positions;
  XFaces faces;  ///< of positions
  std::vector<platform::D3DVECTOR> normals;
  XFaces normalFaces;                              ///< as `faces`, of normals; or empty
  std::vector<XTextureCoordinates> textureCoords;  ///< one for each position
  std::vector<std::shared_ptr<const XMaterial>> materials;
  std::vector<std::uint32_t> faceMaterials;  ///< one for each face unless there are no materials
};

/// A mesh in its place in the model.
struct XPart {
  std::shared_ptr<const XMesh> mesh;
  std::optional<platform::D3DMATRIX> transform;  ///< none outside of all transformed frames
};

using XModel = std::vector<XPart>;

}  // namespace quillorbit::d3dx8
