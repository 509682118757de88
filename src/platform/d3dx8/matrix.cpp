#include "platform/d3dx8/matrix.h"

#include <array>
#include <cmath>

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DMATRIX;
using platform::D3DVECTOR;

struct Vector {
  double x, y, z;
};

Vector Difference(const D3DVECTOR& a, const D3DVECTOR& b) {
  return {double{a.x} - b.x, double{a.y} - b.y, double{a.z} - b.z};
}

double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vector Normalised(const Vector& v) {
  const double dLength = std::sqrt(Dot(v, v));
  if (dLength == 0) return {0, 0, 0};
  return {v.x / dLength, v.y / dLength, v.z / dLength};
}

float Rounded(double d) { return static_cast<float>(d); }

}  // namespace

D3DMATRIX MatrixIdentity() { return MatrixScaling(1, 1, 1); }

D3DMATRIX MatrixRotationX(float fAngle) {
  const float fCos = Rounded(std::cos(double{fAngle}));
  const float fSin = Rounded(std::sin(double{fAngle}));
  return {{{{1, 0, 0, 0}, {0, fCos, fSin, 0}, {0, -fSin, fCos, 0}, {0, 0, 0, 1}}}};
}

D3DMATRIX MatrixRotationZ(float fAngle) {
  const float fCos = Rounded(std::cos(double{fAngle}));
  const float fSin = Rounded(std::sin(double{fAngle}));
  return {{{{fCos, fSin, 0, 0}, {-fSin, fCos, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}};
}

D3DMATRIX MatrixScaling(float x, float y, float z) {
  return {{{{x, 0, 0, 0}, {0, y, 0, 0}, {0, 0, z, 0}, {0, 0, 0, 1}}}};
}

D3DMATRIX MatrixMultiply(const D3DMATRIX& m1, const D3DMATRIX& m2) {
  D3DMATRIX product{};
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) {
      double dSum = 0;
      for (std::size_t k = 0; k < 4; ++k) dSum += double{m1.m[i][k]} * m2.m[k][j];
      product.m[i][j] = Rounded(dSum);
    }
  }
  return product;
}

D3DMATRIX MatrixLookAtLH(const D3DVECTOR& vEye, const D3DVECTOR& vAt, const D3DVECTOR& vUp) {
  const Vector eye = {vEye.x, vEye.y, vEye.z};
  const Vector z = Normalised(Difference(vAt, vEye));
  const Vector x = Normalised(Cross({vUp.x, vUp.y, vUp.z}, z));
  const Vector y = Cross(z, x);
  const auto row = [&](double Vector::*axis) {
    return std::array{Rounded(x.*axis), Rounded(y.*axis), Rounded(z.*axis), 0.0F};
  };
  return {{row(&Vector::x),
           row(&Vector::y),
           row(&Vector::z),
           {Rounded(-Dot(x, eye)), Rounded(-Dot(y, eye)), Rounded(-Dot(z, eye)), 1}}};
}

D3DMATRIX MatrixPerspectiveFovLH(float fFovY, float fAspect, float fNear, float fFar) {
  const double dScaleY = 1 / std::tan(double{fFovY} / 2);
  const double dDepth = double{fFar} / (double{fFar} - fNear);
  return {{{{Rounded(dScaleY / fAspect), 0, 0, 0},
            {0, Rounded(dScaleY), 0, 0},
            {0, 0, Rounded(dDepth), 1},
            {0, 0, Rounded(-dDepth * fNear), 0}}}};
}

std::array<std::array<double, 3>, 3> Cofactors(const D3DMATRIX& matrix) {
  const auto& m = matrix.m;
  std::array<std::array<double, 3>, 3> cofactors{};
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t i1 = (i + 1) % 3, i2 = (i + 2) % 3;
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t j1 = (j + 1) % 3, j2 = (j + 2) % 3;
      cofactors[i][j] = double{m[i1][j1]} * m[i2][j2] - double{m[i1][j2]} * m[i2][j1];
    }
  }
  return cofactors;
}

}  // namespace quillorbit::d3dx8
