#pragma once

#include <string>

#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {

/// Refuses a model (D3DXERR_INVALIDDATA) and says what is wrong with it.
[[noreturn]] inline void RefuseModel(const std::string& sWhy) {
  throw platform::D3DError(platform::D3DXERR_INVALIDDATA, sWhy.c_str());
}

}  // namespace quillorbit::d3dx8
