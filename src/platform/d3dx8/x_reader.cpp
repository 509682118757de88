#include "platform/d3dx8/x_reader.h"

#include <cmath>
#include <utility>

#include "platform/d3dx8/matrix.h"
#include "platform/d3dx8/x_file.h"

namespace quillorbit::d3dx8 {
namespace {

constexpr std::size_t nDepthLimit = 256;
constexpr std::size_t nPartLimit = 16384;  // each frame around a part multiplies its matrix
constexpr float fLargest = 1e18F;          // as for the numbers in the file

}  // namespace

XModel XReader::Read() {
  XObject object;
  while (m_objects.NextAtTop(object)) ReadObject(object, 0);
  return std::move(m_model);
}

void XReader::ReadObject(const XObject& object, std::size_t nDepth) {
  if (object.bReference) {
    if (const auto mesh = m_meshReader.FindMesh(object)) AddPart(mesh);
  } else if (object.sType == "mesh") {
    AddPart(m_meshReader.ReadMesh(object));
  } else if (object.sType == "frame") {
    ReadFrame(nDepth + 1);
  } else {
    m_meshReader.ReadShared(object);
  }
}

void XReader::ReadFrame(std::size_t nDepth) {
  if (nDepth > nDepthLimit) m_tokens.Refuse("frames are nested more than 256 deep");
  const std::size_t iFirstPart = m_model.size();
  std::optional<platform::D3DMATRIX> matrix;
  XObject object;
  while (m_objects.NextInside(object)) {
    if (object.sType == "frametransformmatrix")
      matrix = ReadMatrix();
    else
      ReadObject(object, nDepth);
  }
  // At the end, for the matrix may stand behind the meshes; the inner frames have had their turn.
  if (!matrix) return;
  for (std::size_t i = iFirstPart; i < m_model.size(); ++i) Transform(m_model[i], *matrix);
}

platform::D3DMATRIX XReader::ReadMatrix() {
  platform::D3DMATRIX matrix{};
  for (auto& row : matrix.m)
    for (float& f : row) f = m_tokens.TakeFloat();
  m_objects.SkipRest();
  return matrix;
}

void XReader::Transform(XPart& part, const platform::D3DMATRIX& matrix) const {
  part.transform = part.transform ? MatrixMultiply(*part.transform, matrix) : matrix;
  for (const auto& row : part.transform->m)
    for (const float f : row)
      if (!(std::abs(f) <= fLargest)) m_tokens.Refuse("the frames' matrices are out of range");
}

void XReader::AddPart(const std::shared_ptr<const XMesh>& mesh) {
  if (m_model.size() == nPartLimit) m_tokens.Refuse("there are more than 16384 meshes");
  m_model.push_back({mesh, {}});
}

XModel ReadXModel(std::string sBytes) {
  XFile file(std::move(sBytes));
  return XReader(file.Tokens()).Read();
}

}  // namespace quillorbit::d3dx8
