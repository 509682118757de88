#pragma once

#include <memory>

#include "platform/d3dx8/library.h"
#include "platform/direct3d8.h"
#include "platform/linux/graphics/gl_context.h"
#include "platform/presentation/drawing_thread.h"

namespace quillorbit::linux_adapter {

/// Direct3D 8 on OpenGL: the devices that it makes draw into a drawing surface, on a thread of
/// their own and no more often than the display can show it.
class LinuxDirect3D8 final : public platform::IDirect3D8 {
 public:
  /// `report` is told why there is no OpenGL.
  LinuxDirect3D8(std::shared_ptr<GlContexts> contexts, presentation::DrawingThreads& threads,
                 d3dx8::Report report)
      : m_contexts(std::move(contexts)), m_threads(threads), m_report(std::move(report)) {}

  void GetAdapterDisplayMode(std::uint32_t Adapter, platform::D3DDISPLAYMODE& Mode) override;
  /// What OpenGL is asked for, every driver has.
  [[nodiscard]] std::int32_t CheckDeviceFormat(std::uint32_t Adapter,
                                               platform::D3DDEVTYPE DeviceType,
                                               platform::D3DFORMAT AdapterFormat,
                                               std::uint32_t Usage, platform::D3DRESOURCETYPE RType,
                                               platform::D3DFORMAT CheckFormat) override;
  std::shared_ptr<platform::IDirect3DDevice8> CreateDevice(
      std::uint32_t Adapter, platform::D3DDEVTYPE DeviceType, platform::WindowHandle hFocusWindow,
      std::uint32_t BehaviorFlags, platform::D3DPRESENT_PARAMETERS& Parameters) override;

 private:
  std::shared_ptr<GlContexts> m_contexts;
  presentation::DrawingThreads& m_threads;
  d3dx8::Report m_report;
};

}  // namespace quillorbit::linux_adapter
