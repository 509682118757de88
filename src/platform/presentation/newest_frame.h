#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/presentation/frame.h"
#include "platform/timer.h"

namespace quillorbit::presentation {

/// What the newest-frame device needs from the surface on which its frames are shown.
struct FrameDisplay {
  std::function<bool()> visible;
  std::function<std::chrono::steady_clock::time_point()> now;
  std::unique_ptr<platform::Timer> timer;  ///< the device's own
};

/// A device that draws no more frames than the display can show. It keeps the calls of a frame
/// until Present. Up to about 60 frames a second, Present draws and shows the frame before it
/// returns. When frames come faster it keeps the newest and shows that as soon as the display can
/// take it; likewise while the surface is not visible, until ShowKeptFrame. A frame that a newer
/// one replaces costs next to nothing: only its states reach the device behind.
///
/// A frame begins with a Clear of the whole target. A call's failure comes out of Present; that of
/// a frame shown later is lost, and the next TestCooperativeLevel reports the device's state.
class NewestFrameDevice final : public platform::IDirect3DDevice8 {
 public:
  NewestFrameDevice(std::shared_ptr<platform::IDirect3DDevice8> device, FrameDisplay display);

  /// The surface has become visible.
  void ShowKeptFrame() noexcept;

  [[nodiscard]] std::int32_t TestCooperativeLevel() override;
  std::shared_ptr<platform::IDirect3DTexture8> CreateTexture(
      std::uint32_t Width, std::uint32_t Height, std::uint32_t Levels, std::uint32_t Usage,
      platform::D3DFORMAT Format, platform::D3DPOOL Pool) override;
  std::shared_ptr<platform::IDirect3DVertexBuffer8> CreateVertexBuffer(
      std::uint32_t Length, std::uint32_t Usage, std::uint32_t FVF,
      platform::D3DPOOL Pool) override;
  std::shared_ptr<platform::IDirect3DIndexBuffer8> CreateIndexBuffer(
      std::uint32_t Length, std::uint32_t Usage, platform::D3DFORMAT Format,
      platform::D3DPOOL Pool) override;
  [[nodiscard]] std::uint32_t GetRenderState(platform::D3DRENDERSTATETYPE State) const override;
  void SetRenderState(platform::D3DRENDERSTATETYPE State, std::uint32_t Value) override;
  [[nodiscard]] std::uint32_t GetTextureStageState(
      std::uint32_t Stage, platform::D3DTEXTURESTAGESTATETYPE Type) const override;
  void SetTextureStageState(std::uint32_t Stage, platform::D3DTEXTURESTAGESTATETYPE Type,
                            std::uint32_t Value) override;
  void SetTransform(platform::D3DTRANSFORMSTATETYPE State,
                    const platform::D3DMATRIX& Matrix) override;
  void SetMaterial(const platform::D3DMATERIAL8& Material) override;
  void SetLight(std::uint32_t Index, const platform::D3DLIGHT8& Light) override;
  void LightEnable(std::uint32_t Index, bool Enable) override;
  void SetTexture(std::uint32_t Stage,
                  const std::shared_ptr<platform::IDirect3DTexture8>& Texture) override;
  void Clear(std::uint32_t Count, const platform::RECT* pRects, std::uint32_t Flags,
             platform::D3DCOLOR Color, float Z, std::uint32_t Stencil) override;
  void BeginScene() override;
  void EndScene() override;
  void SetVertexShader(std::uint32_t FVF) override;
  void SetStreamSource(std::uint32_t StreamNumber,
                       const std::shared_ptr<platform::IDirect3DVertexBuffer8>& StreamData,
                       std::uint32_t Stride) override;
  void SetIndices(const std::shared_ptr<platform::IDirect3DIndexBuffer8>& IndexData,
                  std::uint32_t BaseVertexIndex) override;
  void DrawIndexedPrimitive(platform::D3DPRIMITIVETYPE PrimitiveType, std::uint32_t MinIndex,
                            std::uint32_t NumVertices, std::uint32_t StartIndex,
                            std::uint32_t PrimitiveCount) override;
  void DrawPrimitiveUP(platform::D3DPRIMITIVETYPE PrimitiveType, std::uint32_t PrimitiveCount,
                       const void* pVertexStreamZeroData,
                       std::uint32_t VertexStreamZeroStride) override;
  void Present(const platform::RECT* pSourceRect, const platform::RECT* pDestRect,
               platform::WindowHandle hDestWindowOverride, const void* pDirtyRegion) override;

 private:
  template <class State, class Matches>
  [[nodiscard]] const State* LastSet(Matches matches) const;
  void Forget(Frame& frame);
  [[nodiscard]] bool IsDue() const;
  void Wait();
  void ShowNow();

  std::shared_ptr<platform::IDirect3DDevice8> m_device;
  FrameDisplay m_display;
  Frame m_building;                             ///< since the last Present
  Frame m_kept;                                 ///< presented, and not shown yet
  std::chrono::steady_clock::time_point m_due;  ///< when the display can show the next frame
};

}  // namespace quillorbit::presentation
