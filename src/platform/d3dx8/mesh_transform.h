#pragma once

#include <array>

#include "platform/direct3d8.h"

namespace quillorbit::d3dx8 {

/// What a frame's matrix does to the vertices of a mesh.
class MeshTransform {
 public:
  explicit MeshTransform(const platform::D3DMATRIX& matrix);

  /// A point, divided by its fourth component. Throws D3DError when it is beyond 1e18.
  [[nodiscard]] platform::D3DVECTOR Position(const platform::D3DVECTOR& v) const;
  /// A normal, of length 1; zero when nothing is left of it.
  [[nodiscard]] platform::D3DVECTOR Normal(const platform::D3DVECTOR& v) const;

 private:
  platform::D3DMATRIX m_matrix;
  std::array<std::array<double, 3>, 3> m_normalMatrix;
};

}  // namespace quillorbit::d3dx8
