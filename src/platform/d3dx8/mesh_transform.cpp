#include "platform/d3dx8/mesh_transform.h"

#include <cmath>
#include <cstddef>

#include "platform/d3dx8/matrix.h"
#include "platform/d3dx8/x_error.h"

namespace quillorbit::d3dx8 {
namespace {

constexpr double dLargest = 1e18;

float Coordinate(double d) {
  if (!(std::abs(d) <= dLargest)) RefuseModel("a frame moves a vertex out of range");
  return static_cast<float>(d);
}

}  // namespace

// The inverse transpose is the matrix of the cofactors divided by the determinant, of which the
// sign alone matters for a direction. So it does not matter either when there is no inverse.
MeshTransform::MeshTransform(const platform::D3DMATRIX& matrix)
    : m_matrix(matrix), m_normalMatrix(Cofactors(matrix)) {
  double dDeterminant = 0;
  for (std::size_t j = 0; j < 3; ++j) dDeterminant += matrix.m[0][j] * m_normalMatrix[0][j];
  if (dDeterminant >= 0) return;
  for (auto& row : m_normalMatrix)
    for (double& d : row) d = -d;
}

platform::D3DVECTOR MeshTransform::Position(const platform::D3DVECTOR& v) const {
  const auto component = [&](std::size_t j) {
    const auto& m = m_matrix.m;
    return double{v.x} * m[0][j] + double{v.y} * m[1][j] + double{v.z} * m[2][j] + m[3][j];
  };
  const double w = component(3);
  return {Coordinate(component(0) / w), Coordinate(component(1) / w), Coordinate(component(2) / w)};
}

platform::D3DVECTOR MeshTransform::Normal(const platform::D3DVECTOR& v) const {
  const auto component = [&](std::size_t j) {
    const auto& m = m_normalMatrix;
    return v.x * m[0][j] + v.y * m[1][j] + v.z * m[2][j];
  };
  const double x = component(0), y = component(1), z = component(2);
  const double dLength = std::sqrt(x * x + y * y + z * z);
  if (dLength == 0) return {0, 0, 0};
  return {static_cast<float>(x / dLength), static_cast<float>(y / dLength),
          static_cast<float>(z / dLength)};
}

}  // namespace quillorbit::d3dx8
