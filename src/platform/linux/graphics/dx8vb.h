#pragma once

#include <memory>

#include "platform/d3dx8/library.h"
#include "platform/linux/graphics/gl_context.h"

namespace quillorbit::linux_adapter {

/// The library on OpenGL. It reports on the standard error why there is no 3D view.
class LinuxDX8VB final : public d3dx8::Library {
 public:
  LinuxDX8VB(platform::Fonts& fonts, std::shared_ptr<GlContexts> contexts);

  [[nodiscard]] std::shared_ptr<platform::DirectX8> NewDirectX8() override;

 private:
  std::shared_ptr<GlContexts> m_contexts;
};

}  // namespace quillorbit::linux_adapter
