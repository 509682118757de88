#include "platform/d3dx8/x_mesh_reader.h"

#include <algorithm>
#include <utility>

#include "platform/d3dx8/x_texture_name.h"

namespace quillorbit::d3dx8 {

using platform::D3DVECTOR;

void XMeshReader::ReadShared(const XObject& object) {
  if (object.bReference) return;
  if (object.sType == "material")
    ReadMaterial(object);
  else if (object.sType == "texturefilename")
    ReadTextureName(object);
  else
    m_objects.SkipRest();
}

std::shared_ptr<const XMesh> XMeshReader::ReadMesh(const XObject& object) {
  auto mesh = std::make_shared<XMesh>();
  mesh->positions = ReadVectors();
  mesh->textureCoords.resize(mesh->positions.size());
  mesh->faces = ReadFaces(mesh->positions.size());
  XObject part;
  while (m_objects.NextInside(part)) ReadMeshPart(part, *mesh);
  m_meshes.Add(object, mesh);
  return mesh;
}

void XMeshReader::ReadMeshPart(const XObject& object, XMesh& mesh) {
  if (object.sType == "meshnormals")
    ReadNormals(mesh);
  else if (object.sType == "meshtexturecoords")
    ReadTextureCoords(mesh);
  else if (object.sType == "meshmateriallist")
    ReadMaterialList(mesh);
  else
    ReadShared(object);
}

std::vector<D3DVECTOR> XMeshReader::ReadVectors() {
  std::vector<D3DVECTOR> vectors(m_tokens.TakeCount(3));
  for (D3DVECTOR& v : vectors) {
    v.x = m_tokens.TakeFloat();
    v.y = m_tokens.TakeFloat();
    v.z = m_tokens.TakeFloat();
  }
  return vectors;
}

XFaces XMeshReader::ReadFaces(std::size_t nTargets) {
  XFaces faces;
  faces.ends.resize(m_tokens.TakeCount(4));
  for (std::uint32_t& nEnd : faces.ends) {
    const std::uint32_t nCorners = m_tokens.TakeCount(1);
    if (nCorners < 3) m_tokens.Refuse("a face has fewer than three corners");
    for (std::uint32_t i = 0; i < nCorners; ++i) {
      faces.corners.push_back(m_tokens.TakeInteger());
      if (faces.corners.back() >= nTargets)
        m_tokens.Refuse("a face has a corner that does not exist");
    }
    nEnd = static_cast<std::uint32_t>(faces.corners.size());
  }
  return faces;
}

void XMeshReader::ReadNormals(XMesh& mesh) {
  mesh.normals = ReadVectors();
  mesh.normalFaces = ReadFaces(mesh.normals.size());
  if (!mesh.normalFaces.ends.empty() && mesh.normalFaces.ends != mesh.faces.ends)
    m_tokens.Refuse("the faces of the normals are not those of the mesh");
  m_objects.SkipRest();
}

void XMeshReader::ReadTextureCoords(XMesh& mesh) {
  const std::uint32_t nCount = m_tokens.TakeCount(2);
  for (std::uint32_t i = 0; i < nCount; ++i) {
    const float u = m_tokens.TakeFloat();
    const float v = m_tokens.TakeFloat();
    if (i < mesh.textureCoords.size()) mesh.textureCoords[i] = {u, v};
  }
  m_objects.SkipRest();
}

void XMeshReader::ReadMaterialList(XMesh& mesh) {
  m_tokens.TakeInteger();  // how many materials: those that stand here count
  std::vector<std::uint32_t> indexes(m_tokens.TakeCount(1));
  for (std::uint32_t& iMaterial : indexes) iMaterial = m_tokens.TakeInteger();

  mesh.materials.clear();
  XObject object;
  while (m_objects.NextInside(object)) {
    if (object.bReference)
      mesh.materials.push_back(FindMaterial(object));
    else if (object.sType == "material")
      mesh.materials.push_back(ReadMaterial(object));
    else
      m_objects.SkipRest();
    if (mesh.materials.size() > nMaterialLimit)
      m_tokens.Refuse("there are more than 4096 materials");
  }
  const std::uint32_t iLargest =
      indexes.empty() ? 0 : *std::max_element(indexes.begin(), indexes.end());
  if (iLargest > 0 && iLargest >= mesh.materials.size())
    m_tokens.Refuse("a face has a material that does not exist");
  // The last index counts for all faces that have none.
  indexes.resize(mesh.faces.ends.size(), indexes.empty() ? 0 : indexes.back());
  mesh.faceMaterials = std::move(indexes);
}

XMeshReader::MaterialPointer XMeshReader::FindMaterial(const XObject& reference) const {
  MaterialPointer material = m_materials.Find(reference);
  if (!material) m_tokens.Refuse("a reference is to no material before it");
  return material;
}

XMeshReader::MaterialPointer XMeshReader::ReadMaterial(const XObject& object) {
  auto material = std::make_shared<XMaterial>();
  ReadColour(material->material.Diffuse);
  material->material.Diffuse.a = m_tokens.TakeFloat();
  material->material.Power = m_tokens.TakeFloat();
  ReadColour(material->material.Specular);
  ReadColour(material->material.Emissive);
  XObject part;
  while (m_objects.NextInside(part)) {
    TextPointer texture;
    if (part.bReference)
      texture = m_textures.Find(part);
    else if (part.sType == "texturefilename")
      texture = ReadTextureName(part);
    else
      m_objects.SkipRest();
    if (texture) material->sTexture = *texture;
  }
  m_materials.Add(object, material);
  return material;
}

void XMeshReader::ReadColour(platform::D3DCOLORVALUE& colour) {
  colour.r = m_tokens.TakeFloat();
  colour.g = m_tokens.TakeFloat();
  colour.b = m_tokens.TakeFloat();
}

XMeshReader::TextPointer XMeshReader::ReadTextureName(const XObject& object) {
  auto texture = std::make_shared<const std::string>(TextureName(m_tokens.TakeText()));
  m_objects.SkipRest();
  m_textures.Add(object, texture);
  return texture;
}

}  // namespace quillorbit::d3dx8
