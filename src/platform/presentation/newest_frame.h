#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>

#include "platform/presentation/drawing_thread.h"
#include "platform/presentation/frame.h"

namespace quillorbit::presentation {

/// A device that makes nobody wait for a picture. It keeps the calls of a frame until Present,
/// which hands them over to a thread that draws with the device behind. That draws only the newest,
/// no more often than the display can show it; likewise when a surface that was not visible comes
/// into sight again. Of a frame that a newer one replaces, only the states reach the device behind.
///
/// Until the first Clear everything goes to the device behind at once, and its failures come out.
/// From then on the device is the drawing thread's, but for the making of resources: its
/// CreateTexture, CreateVertexBuffer and CreateIndexBuffer have to allow that on another thread. A
/// resource is filled before it is drawn with. A frame begins with a Clear of the whole target. A
/// frame's failure is lost with the frame; the TestCooperativeLevel of a later one reports the
/// device's state.
class NewestFrameDevice final : public platform::IDirect3DDevice8 {
 public:
  /// `seen` tells whether a frame would be visible. The threads have to outlive the device.
  NewestFrameDevice(const std::shared_ptr<platform::IDirect3DDevice8>& device,
                    DrawingThreads& threads, std::function<bool()> seen);
  /// Waits for nothing. The device behind is released as soon as it is not drawing.
  ~NewestFrameDevice() override;

  /// The surface has become visible, or has another size.
  void ShowAgain();
  /// Draws a text, as the font's library does.
  void DrawText(const std::shared_ptr<const FontSource>& font, platform::D3DCOLOR Color,
                std::string_view sText, const platform::RECT& Rect, std::uint32_t Format);

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
  /// Throws D3DError at the program's end.
  [[nodiscard]] std::shared_ptr<platform::IDirect3DDevice8> Behind() const;
  void ReadStates();
  void Set(const Call& state);

  const std::shared_ptr<DrawingThread> m_thread;  ///< which owns the device behind
  const std::weak_ptr<platform::IDirect3DDevice8> m_device;
  DrawingThreads& m_threads;
  const std::function<bool()> m_seen;
  std::map<platform::D3DRENDERSTATETYPE, std::uint32_t> m_renderStates;
  std::map<platform::D3DTEXTURESTAGESTATETYPE, std::uint32_t> m_stage0;
  bool m_bRecording = false;  ///< since the first Clear
  bool m_bStarted = false;    ///< the thread, by the first Present
  Frame m_building;           ///< since the last Present
};

}  // namespace quillorbit::presentation
