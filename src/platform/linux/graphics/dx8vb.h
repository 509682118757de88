#pragma once

#include <memory>

#include "platform/d3dx8/library.h"
#include "platform/linux/graphics/gl_context.h"
#include "platform/presentation/drawing_thread.h"

namespace quillorbit::linux_adapter {

/// The library on OpenGL. It reports on the standard error why there is no 3D view.
class LinuxDX8VB final : public d3dx8::Library {
 public:
  /// The threads draw the frames, and have to outlive the devices.
  LinuxDX8VB(platform::Fonts& fonts, std::shared_ptr<GlContexts> contexts,
             presentation::DrawingThreads& threads);

  [[nodiscard]] std::shared_ptr<platform::DirectX8> NewDirectX8() override;
  [[nodiscard]] std::shared_ptr<platform::D3DX8> NewD3DX8() override;

 private:
  std::shared_ptr<GlContexts> m_contexts;
  presentation::DrawingThreads& m_threads;
};

}  // namespace quillorbit::linux_adapter
