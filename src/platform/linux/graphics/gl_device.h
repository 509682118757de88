#pragma once

#include <memory>

#include <QSize>

#include "platform/direct3d8.h"
#include "platform/linux/graphics/gl_context.h"
#include "platform/linux/graphics/gl_resources.h"
#include "platform/linux/window/drawing_surface.h"

namespace quillorbit::linux_adapter {

/// A Direct3D 8 device on OpenGL. It draws each call at once into a back buffer of its own; Present
/// reads that back and shows it on the surface. On a scaled display the back buffer has the
/// display's pixels, while coordinates stay the surface's.
///
/// It is made on the user-interface thread. Whichever thread draws with it first has its context:
/// that thread also destroys it. Resources may be made and filled on another.
class GlDevice final : public platform::IDirect3DDevice8 {
 public:
  /// Throws D3DError when the driver cannot draw such a surface.
  GlDevice(std::shared_ptr<GlContext> context, std::shared_ptr<GlContexts> contexts,
           DrawingSurface& surface);
  ~GlDevice() override;

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
  void SetMaterial(const platform::D3DMATERIAL8& Material) override { m_state.material = Material; }
  void SetLight(std::uint32_t Index, const platform::D3DLIGHT8& Light) override;
  void LightEnable(std::uint32_t Index, bool Enable) override;
  void SetTexture(std::uint32_t Stage,
                  const std::shared_ptr<platform::IDirect3DTexture8>& Texture) override;
  void Clear(std::uint32_t Count, const platform::RECT* pRects, std::uint32_t Flags,
             platform::D3DCOLOR Color, float Z, std::uint32_t Stencil) override;
  void BeginScene() override;
  void EndScene() override {}
  void SetVertexShader(std::uint32_t FVF) override { m_lVertexFormat = FVF; }
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
  void CreateBackBuffer();
  /// The context, current and usable; throws D3DError when it is lost.
  GlFunctions& Gl();
  void Prepare(std::uint32_t nStride);
  void CheckErrors();

  std::shared_ptr<GlContext> m_context;
  std::shared_ptr<GlContexts> m_contexts;
  std::unique_ptr<Pictures> m_pictures;
  QSize m_pixels;  ///< of the back buffer
  GLuint m_framebuffer = 0, m_colours = 0, m_userVertices = 0;

  PipelineState m_state;
  std::shared_ptr<GlTexture> m_texture;
  std::shared_ptr<GlVertexBuffer> m_vertices;
  std::shared_ptr<GlIndexBuffer> m_indices;
  std::uint32_t m_lVertexFormat = 0, m_nStride = 0;
};

}  // namespace quillorbit::linux_adapter
