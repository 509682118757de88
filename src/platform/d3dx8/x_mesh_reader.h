#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/d3dx8/x_model.h"
#include "platform/d3dx8/x_objects.h"
#include "platform/d3dx8/x_tokens.h"

namespace quillorbit::d3dx8 {

/// Reads the objects that make up a mesh. It remembers materials, texture names and meshes by their
/// names for the references that come later.
class XMeshReader {
 public:
  XMeshReader(XTokens& tokens, XObjects& objects) : m_tokens(tokens), m_objects(objects) {}

  /// Reads a Material or TextureFilename outside of a mesh, and ignores everything else.
  void ReadShared(const XObject& object);
  std::shared_ptr<const XMesh> ReadMesh(const XObject& object);
  /// Null when the reference is not to a mesh.
  [[nodiscard]] std::shared_ptr<const XMesh> FindMesh(const XObject& reference) const {
    return m_meshes.Find(reference);
  }

 private:
  using MaterialPointer = std::shared_ptr<const XMaterial>;
  using TextPointer = std::shared_ptr<const std::string>;

  void ReadMeshPart(const XObject& object, XMesh& mesh);
  std::vector<platform::D3DVECTOR> ReadVectors();
  XFaces ReadFaces(std::size_t nTargets);
  void ReadNormals(XMesh& mesh);
  void ReadTextureCoords(XMesh& mesh);
  void ReadMaterialList(XMesh& mesh);
  MaterialPointer FindMaterial(const XObject& reference) const;
  MaterialPointer ReadMaterial(const XObject& object);
  TextPointer ReadTextureName(const XObject& object);
  void ReadColour(platform::D3DCOLORVALUE& colour);

  XTokens& m_tokens;
  XObjects& m_objects;
  XNamed<MaterialPointer> m_materials;
  XNamed<TextPointer> m_textures;
  XNamed<std::shared_ptr<const XMesh>> m_meshes;
};

}  // namespace quillorbit::d3dx8
