#include "platform/linux/graphics/direct3d8.h"

#include <cmath>
#include <exception>
#include <utility>

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>

#include "platform/linux/graphics/gl_device.h"
#include "platform/linux/window/drawing_surface.h"
#include "platform/presentation/newest_frame.h"

namespace quillorbit::linux_adapter {
namespace {

using platform::D3DERR_INVALIDCALL;
using platform::D3DError;

void OnlyDefaultAdapter(std::uint32_t nAdapter) {
  if (nAdapter != platform::D3DADAPTER_DEFAULT)
    throw D3DError(D3DERR_INVALIDCALL, "there is one adapter");
}

}  // namespace

void LinuxDirect3D8::GetAdapterDisplayMode(std::uint32_t Adapter, platform::D3DDISPLAYMODE& Mode) {
  OnlyDefaultAdapter(Adapter);
  const QScreen* const pScreen = QGuiApplication::primaryScreen();
  if (pScreen == nullptr) throw D3DError(platform::D3DERR_NOTAVAILABLE, "there is no screen");
  const QSize size = pScreen->size() * pScreen->devicePixelRatio();
  Mode = {static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height()),
          static_cast<std::uint32_t>(std::lround(pScreen->refreshRate())),
          platform::D3DFMT_X8R8G8B8};
}

std::int32_t LinuxDirect3D8::CheckDeviceFormat(std::uint32_t Adapter,
                                               platform::D3DDEVTYPE DeviceType,
                                               platform::D3DFORMAT /*AdapterFormat*/,
                                               std::uint32_t /*Usage*/,
                                               platform::D3DRESOURCETYPE /*RType*/,
                                               platform::D3DFORMAT /*CheckFormat*/) {
  const bool bKnown =
      Adapter == platform::D3DADAPTER_DEFAULT && DeviceType == platform::D3DDEVTYPE_HAL;
  return bKnown ? platform::D3D_OK : platform::D3DERR_NOTAVAILABLE;
}

std::shared_ptr<platform::IDirect3DDevice8> LinuxDirect3D8::CreateDevice(
    std::uint32_t Adapter, platform::D3DDEVTYPE DeviceType, platform::WindowHandle hFocusWindow,
    std::uint32_t /*BehaviorFlags*/, platform::D3DPRESENT_PARAMETERS& Parameters) {
  OnlyDefaultAdapter(Adapter);
  if (DeviceType != platform::D3DDEVTYPE_HAL)
    throw D3DError(platform::D3DERR_NOTAVAILABLE, "there is no such device");
  DrawingSurface* const pSurface = DrawingSurface::Find(hFocusWindow);
  if (pSurface == nullptr || Parameters.Windowed == 0)
    throw D3DError(D3DERR_INVALIDCALL, "a device needs a surface to draw into");

  std::shared_ptr<GlDevice> device;
  try {
    device = std::make_shared<GlDevice>(m_contexts->New(), m_contexts, *pSurface);
  } catch (const std::exception& failure) {
    m_report(failure.what());
    throw D3DError(platform::D3DERR_NOTAVAILABLE, failure.what());
  }
  auto newestFrame = std::make_shared<presentation::NewestFrameDevice>(
      device, m_threads, [surface = QPointer(pSurface)] { return surface && surface->IsSeen(); });
  pSurface->exposed = [weak = std::weak_ptr(newestFrame)] {
    if (const auto shown = weak.lock()) shown->ShowAgain();
  };
  return newestFrame;
}

}  // namespace quillorbit::linux_adapter
