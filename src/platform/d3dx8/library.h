#pragma once

#include <functional>
#include <utility>

#include "platform/d3dx8/matrix_functions.h"
#include "platform/fonts.h"

namespace quillorbit::d3dx8 {

/// Receives the reason why a model or an image cannot be loaded, in words for the user.
using Report = std::function<void(const char* sWhy)>;

/// The automation library with D3DX over any device; the Direct3D below it is the adapter's.
class Library : public MatrixFunctions {
 public:
  Library(platform::Fonts& fonts, Report report) : m_report(std::move(report)), m_fonts(fonts) {}

  [[nodiscard]] std::shared_ptr<platform::D3DX8> NewD3DX8() override;

 protected:
  const Report m_report;

 private:
  platform::Fonts& m_fonts;
};

}  // namespace quillorbit::d3dx8
