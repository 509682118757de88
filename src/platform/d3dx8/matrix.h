#pragma once

#include <array>

#include "platform/direct3d8.h"

// The matrix functions of D3DX, after the platform's documentation of each. What they compute they
// compute in 64 bits and round once, so that every desktop's C library gives the same 32-bit
// floats.

namespace quillorbit::d3dx8 {

[[nodiscard]] platform::D3DMATRIX MatrixIdentity();
[[nodiscard]] platform::D3DMATRIX MatrixRotationX(float fAngle);  ///< radians
[[nodiscard]] platform::D3DMATRIX MatrixRotationZ(float fAngle);  ///< radians
[[nodiscard]] platform::D3DMATRIX MatrixScaling(float x, float y, float z);
/// The first factor applies first.
[[nodiscard]] platform::D3DMATRIX MatrixMultiply(const platform::D3DMATRIX& m1,
                                                 const platform::D3DMATRIX& m2);
/// Where the eye is the target, or looks along the up direction, the axes that this leaves open
/// are zero.
[[nodiscard]] platform::D3DMATRIX MatrixLookAtLH(const platform::D3DVECTOR& vEye,
                                                 const platform::D3DVECTOR& vAt,
                                                 const platform::D3DVECTOR& vUp);
[[nodiscard]] platform::D3DMATRIX MatrixPerspectiveFovLH(float fFovY, float fAspect, float fNear,
                                                         float fFar);

/// The cofactors of the upper left 3 x 3: its inverse transpose, by which normals are transformed,
/// times its determinant. The determinant is their first row's product with the matrix's.
[[nodiscard]] std::array<std::array<double, 3>, 3> Cofactors(const platform::D3DMATRIX& matrix);

}  // namespace quillorbit::d3dx8
