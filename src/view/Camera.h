#pragma once

#include "platform/dx8vb.h"

namespace quillorbit {

[[nodiscard]] inline platform::D3DVECTOR MakeVector(float x, float y, float z) { return {x, y, z}; }

/// The view from a place beside and above the model, in scene units, and 90 units in front of it.
inline void LookAtModel(platform::DX8VB& dx, platform::D3DMATRIX& mOut, float fBeside,
                        float fAbove) {
  dx.D3DXMatrixLookAtLH(mOut, MakeVector(fBeside, fAbove, 90), MakeVector(0, 0, 0),
                        MakeVector(0, 1, 0));
}

}  // namespace quillorbit
