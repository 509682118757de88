#pragma once

#include "platform/d3dx8/matrix_functions.h"
#include "platform/fonts.h"

namespace quillorbit::d3dx8 {

/// The automation library with D3DX over any device; the Direct3D below it is the adapter's.
class Library : public MatrixFunctions {
 public:
  explicit Library(platform::Fonts& fonts) : m_fonts(fonts) {}

  [[nodiscard]] std::shared_ptr<platform::D3DX8> NewD3DX8() override;

 private:
  platform::Fonts& m_fonts;
};

}  // namespace quillorbit::d3dx8
