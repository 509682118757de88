#pragma once

#include <cstddef>
#include <string>

#include "platform/d3dx8/x_mesh_reader.h"
#include "platform/d3dx8/x_model.h"
#include "platform/d3dx8/x_objects.h"
#include "platform/d3dx8/x_tokens.h"

// Reads the meshes of an X file, after the format's documentation and its standard templates. It
// ignores templates in the file, and all objects of other types, such as animations.

namespace quillorbit::d3dx8 {

class XReader {
 public:
  explicit XReader(XTokens& tokens)
      : m_tokens(tokens), m_objects(tokens), m_meshReader(tokens, m_objects) {}

  /// The meshes in the order in which they are in the file, in frames and outside. One that a
  /// frame refers to is in that frame too. Throws D3DError when the file is damaged, or exceeds
  /// what a model can sensibly be.
  [[nodiscard]] XModel Read();

 private:
  void ReadObject(const XObject& object, std::size_t nDepth);
  void ReadFrame(std::size_t nDepth);
  platform::D3DMATRIX ReadMatrix();
  void Transform(XPart& part, const platform::D3DMATRIX& matrix) const;
  void AddPart(const std::shared_ptr<const XMesh>& mesh);

  XTokens& m_tokens;
  XObjects m_objects;
  XMeshReader m_meshReader;
  XModel m_model;
};

/// The meshes of a file, given as its bytes. Throws D3DError when they are no X file, and as
/// XReader::Read().
[[nodiscard]] XModel ReadXModel(std::string sBytes);

}  // namespace quillorbit::d3dx8
