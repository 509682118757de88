#pragma once

#include "platform/d3dx8/matrix.h"
#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {

/// The library's matrix functions, which are the same on every desktop.
class MatrixFunctions : public platform::DX8VB {
 public:
  void D3DXMatrixIdentity(platform::D3DMATRIX& mOut) override { mOut = MatrixIdentity(); }
  void D3DXMatrixRotationX(platform::D3DMATRIX& mOut, float fAngle) override {
    mOut = MatrixRotationX(fAngle);
  }
  void D3DXMatrixRotationZ(platform::D3DMATRIX& mOut, float fAngle) override {
    mOut = MatrixRotationZ(fAngle);
  }
  void D3DXMatrixScaling(platform::D3DMATRIX& mOut, float x, float y, float z) override {
    mOut = MatrixScaling(x, y, z);
  }
  void D3DXMatrixMultiply(platform::D3DMATRIX& mOut, const platform::D3DMATRIX& m1,
                          const platform::D3DMATRIX& m2) override {
    mOut = MatrixMultiply(m1, m2);
  }
  void D3DXMatrixLookAtLH(platform::D3DMATRIX& mOut, const platform::D3DVECTOR& vEye,
                          const platform::D3DVECTOR& vAt, const platform::D3DVECTOR& vUp) override {
    mOut = MatrixLookAtLH(vEye, vAt, vUp);
  }
  void D3DXMatrixPerspectiveFovLH(platform::D3DMATRIX& mOut, float fFovY, float fAspect,
                                  float fNear, float fFar) override {
    mOut = MatrixPerspectiveFovLH(fFovY, fAspect, fNear, fFar);
  }
};

}  // namespace quillorbit::d3dx8
