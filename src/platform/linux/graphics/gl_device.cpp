#include "platform/linux/graphics/gl_device.h"

#include <string>

namespace quillorbit::linux_adapter {
namespace {

using platform::D3DERR_INVALIDCALL;
using platform::D3DError;

constexpr std::uint32_t nLargestTexture = 4096;  // pixels, each way

/// A resource that this adapter has made; throws when it is another's.
template <class Ours, class Interface>
std::shared_ptr<Ours> Own(const std::shared_ptr<Interface>& resource) {
  auto own = std::dynamic_pointer_cast<Ours>(resource);
  if (resource && !own) throw D3DError(D3DERR_INVALIDCALL, "a resource of another device");
  return own;
}

struct Primitives {
  GLenum eMode;
  GLsizei nVertices;
};

Primitives ToGl(platform::D3DPRIMITIVETYPE eType, std::uint32_t nPrimitives) {
  switch (eType) {
    case platform::D3DPT_TRIANGLELIST:
      return {GL_TRIANGLES, static_cast<GLsizei>(nPrimitives * 3)};
    case platform::D3DPT_TRIANGLESTRIP:
      return {GL_TRIANGLE_STRIP, static_cast<GLsizei>(nPrimitives + 2)};
  }
  throw D3DError(D3DERR_INVALIDCALL, "unknown primitive type");
}

void OnlyStage0(std::uint32_t nStage) {
  if (nStage != 0) throw D3DError(D3DERR_INVALIDCALL, "there is one texture stage");
}

}  // namespace

GlDevice::GlDevice(std::shared_ptr<GlContext> context, std::shared_ptr<GlContexts> contexts,
                   DrawingSurface& surface)
    : m_context(std::move(context)),
      m_contexts(std::move(contexts)),
      m_pixels(surface.PixelSize()) {
  const QSize size = surface.size().expandedTo({1, 1});
  m_context->MakeCurrent();
  CreateBackBuffer();
  m_context->pipeline->SetTarget(static_cast<std::uint32_t>(size.width()),
                                 static_cast<std::uint32_t>(size.height()));
  CheckErrors();
  m_context->LetGo();
  m_pictures = surface.NewPictures();
}

GlDevice::~GlDevice() { m_context->Close(); }

void GlDevice::CreateBackBuffer() {
  GlFunctions& gl = m_context->gl;
  gl.GenBuffers(1, &m_userVertices);
  // A texture, which drivers keep in the order that it is given and read back in; a render buffer
  // would be converted each time.
  gl.GenTextures(1, &m_colours);
  gl.BindTexture(GL_TEXTURE_2D, m_colours);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, m_pixels.width(), m_pixels.height(), 0, GL_BGRA,
                GL_UNSIGNED_BYTE, nullptr);
  gl.GenFramebuffers(1, &m_framebuffer);
  gl.BindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
  gl.FramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_colours, 0);
  if (gl.CheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    throw D3DError(platform::D3DERR_NOTAVAILABLE, "the driver cannot draw off screen");
  gl.Viewport(0, 0, m_pixels.width(), m_pixels.height());
  gl.Disable(GL_DITHER);
}

GlFunctions& GlDevice::Gl() {
  if (m_context->IsLost()) throw D3DError(platform::D3DERR_DEVICELOST, "the device is lost");
  m_context->MakeCurrent();
  return m_context->gl;
}

std::int32_t GlDevice::TestCooperativeLevel() {
  if (!m_context->IsLost()) return platform::D3D_OK;
  return m_contexts->Available() ? platform::D3DERR_DEVICENOTRESET : platform::D3DERR_DEVICELOST;
}

std::shared_ptr<platform::IDirect3DTexture8> GlDevice::CreateTexture(
    std::uint32_t Width, std::uint32_t Height, std::uint32_t Levels, std::uint32_t /*Usage*/,
    platform::D3DFORMAT Format, platform::D3DPOOL /*Pool*/) {
  if (Format != platform::D3DFMT_A8R8G8B8)
    throw D3DError(D3DERR_INVALIDCALL, "unknown texture format");
  if (Width == 0 || Height == 0 || Width > nLargestTexture || Height > nLargestTexture)
    throw D3DError(D3DERR_INVALIDCALL, "a texture cannot have this size");
  return std::make_shared<GlTexture>(m_context, Width, Height, Levels);
}

std::shared_ptr<platform::IDirect3DVertexBuffer8> GlDevice::CreateVertexBuffer(
    std::uint32_t Length, std::uint32_t /*Usage*/, std::uint32_t /*FVF*/,
    platform::D3DPOOL /*Pool*/) {
  return std::make_shared<GlVertexBuffer>(m_context, Length);
}

std::shared_ptr<platform::IDirect3DIndexBuffer8> GlDevice::CreateIndexBuffer(
    std::uint32_t Length, std::uint32_t /*Usage*/, platform::D3DFORMAT Format,
    platform::D3DPOOL /*Pool*/) {
  if (Format != platform::D3DFMT_INDEX16 && Format != platform::D3DFMT_INDEX32)
    throw D3DError(D3DERR_INVALIDCALL, "unknown index format");
  return std::make_shared<GlIndexBuffer>(m_context, Length, Format == platform::D3DFMT_INDEX32);
}

std::uint32_t GlDevice::GetRenderState(platform::D3DRENDERSTATETYPE State) const {
  const auto found = m_state.renderStates.find(State);
  if (found == m_state.renderStates.end())
    throw D3DError(D3DERR_INVALIDCALL, "unknown render state");
  return found->second;
}

void GlDevice::SetRenderState(platform::D3DRENDERSTATETYPE State, std::uint32_t Value) {
  static_cast<void>(GetRenderState(State));
  m_state.renderStates[State] = Value;
}

std::uint32_t GlDevice::GetTextureStageState(std::uint32_t Stage,
                                             platform::D3DTEXTURESTAGESTATETYPE Type) const {
  OnlyStage0(Stage);
  const auto found = m_state.stage0.find(Type);
  if (found == m_state.stage0.end())
    throw D3DError(D3DERR_INVALIDCALL, "unknown texture stage state");
  return found->second;
}

void GlDevice::SetTextureStageState(std::uint32_t Stage, platform::D3DTEXTURESTAGESTATETYPE Type,
                                    std::uint32_t Value) {
  static_cast<void>(GetTextureStageState(Stage, Type));
  m_state.stage0[Type] = Value;
}

void GlDevice::SetTransform(platform::D3DTRANSFORMSTATETYPE State,
                            const platform::D3DMATRIX& Matrix) {
  switch (State) {
    case platform::D3DTS_WORLD:
      m_state.world = Matrix;
      return;
    case platform::D3DTS_VIEW:
      m_state.view = Matrix;
      return;
    case platform::D3DTS_PROJECTION:
      m_state.projection = Matrix;
      return;
  }
  throw D3DError(D3DERR_INVALIDCALL, "unknown transform");
}

void GlDevice::SetLight(std::uint32_t Index, const platform::D3DLIGHT8& Light) {
  if (Light.Type != platform::D3DLIGHT_DIRECTIONAL)
    throw D3DError(D3DERR_INVALIDCALL, "only directional lights can be shown");
  m_state.lights[Index] = Light;
}

void GlDevice::LightEnable(std::uint32_t Index, bool Enable) {
  // A light that was never set is the platform's default: white, along the line of sight.
  if (m_state.lights.count(Index) == 0) {
    platform::D3DLIGHT8 light{};
    light.Type = platform::D3DLIGHT_DIRECTIONAL;
    light.Diffuse = {1, 1, 1, 0};
    light.Direction = {0, 0, 1};
    m_state.lights[Index] = light;
  }
  if (Enable)
    m_state.lightsOn.insert(Index);
  else
    m_state.lightsOn.erase(Index);
}

void GlDevice::SetTexture(std::uint32_t Stage,
                          const std::shared_ptr<platform::IDirect3DTexture8>& Texture) {
  OnlyStage0(Stage);
  m_texture = Own<GlTexture>(Texture);
}

void GlDevice::Clear(std::uint32_t /*Count*/, const platform::RECT* /*pRects*/, std::uint32_t Flags,
                     platform::D3DCOLOR Color, float /*Z*/, std::uint32_t /*Stencil*/) {
  if (Flags != platform::D3DCLEAR_TARGET)
    throw D3DError(D3DERR_INVALIDCALL, "there is only a target to clear");
  GlFunctions& gl = Gl();
  const auto part = [&](int nShift) { return static_cast<float>(Color >> nShift & 0xFF) / 255.0F; };
  // The back buffer has no alpha: what is read back is opaque.
  gl.ColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  gl.ClearColor(part(16), part(8), part(0), 1);
  gl.Clear(GL_COLOR_BUFFER_BIT);
  gl.ColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
}

void GlDevice::BeginScene() { Gl(); }

void GlDevice::SetStreamSource(std::uint32_t StreamNumber,
                               const std::shared_ptr<platform::IDirect3DVertexBuffer8>& StreamData,
                               std::uint32_t Stride) {
  if (StreamNumber != 0) throw D3DError(D3DERR_INVALIDCALL, "there is one vertex stream");
  m_vertices = Own<GlVertexBuffer>(StreamData);
  m_nStride = Stride;
}

void GlDevice::SetIndices(const std::shared_ptr<platform::IDirect3DIndexBuffer8>& IndexData,
                          std::uint32_t BaseVertexIndex) {
  if (BaseVertexIndex != 0) throw D3DError(D3DERR_INVALIDCALL, "indexes begin at the first vertex");
  m_indices = Own<GlIndexBuffer>(IndexData);
}

void GlDevice::DrawIndexedPrimitive(platform::D3DPRIMITIVETYPE PrimitiveType,
                                    std::uint32_t /*MinIndex*/, std::uint32_t /*NumVertices*/,
                                    std::uint32_t StartIndex, std::uint32_t PrimitiveCount) {
  GlFunctions& gl = Gl();
  const Primitives primitives = ToGl(PrimitiveType, PrimitiveCount);
  if (!m_vertices || !m_indices ||
      std::size_t{StartIndex} + static_cast<std::size_t>(primitives.nVertices) > m_indices->Count())
    throw D3DError(D3DERR_INVALIDCALL, "not enough vertices");
  m_vertices->Bind();
  m_indices->Bind();
  Prepare(m_nStride);
  gl.DrawElements(primitives.eMode, primitives.nVertices, m_indices->Type(),
                  reinterpret_cast<const void*>(std::uintptr_t{StartIndex} * m_indices->Size()));
}

void GlDevice::DrawPrimitiveUP(platform::D3DPRIMITIVETYPE PrimitiveType,
                               std::uint32_t PrimitiveCount, const void* pVertexStreamZeroData,
                               std::uint32_t VertexStreamZeroStride) {
  GlFunctions& gl = Gl();
  const Primitives primitives = ToGl(PrimitiveType, PrimitiveCount);
  gl.BindBuffer(GL_ARRAY_BUFFER, m_userVertices);
  gl.BufferData(GL_ARRAY_BUFFER, GLsizeiptr{primitives.nVertices} * VertexStreamZeroStride,
                pVertexStreamZeroData, GL_STREAM_DRAW);
  Prepare(VertexStreamZeroStride);
  gl.DrawArrays(primitives.eMode, 0, primitives.nVertices);
  m_vertices.reset();
}

void GlDevice::Prepare(std::uint32_t nStride) {
  if (m_texture) {
    const auto filter = [&](platform::D3DTEXTURESTAGESTATETYPE eFilter) {
      return static_cast<platform::D3DTEXTUREFILTERTYPE>(m_state.stage0.at(eFilter));
    };
    m_texture->Bind(filter(platform::D3DTSS_MAGFILTER), filter(platform::D3DTSS_MINFILTER),
                    filter(platform::D3DTSS_MIPFILTER));
  }
  m_context->pipeline->Prepare(m_state, m_lVertexFormat, nStride, m_texture != nullptr);
}

void GlDevice::Present(const platform::RECT* /*pSourceRect*/, const platform::RECT* /*pDestRect*/,
                       platform::WindowHandle /*hDestWindowOverride*/,
                       const void* /*pDirtyRegion*/) {
  GlFunctions& gl = Gl();
  gl.ReadPixels(0, 0, m_pixels.width(), m_pixels.height(), GL_BGRA, GL_UNSIGNED_BYTE,
                m_pictures->Next(m_pixels).bits());
  CheckErrors();
  m_pictures->Show();
}

void GlDevice::CheckErrors() {
  if (m_context->IsLost()) throw D3DError(platform::D3DERR_DEVICELOST, "the device is lost");
  const GLenum eError = m_context->gl.GetError();
  if (eError == GL_NO_ERROR) return;
  while (m_context->gl.GetError() != GL_NO_ERROR && !m_context->IsLost()) continue;
  throw D3DError(platform::D3DERR_DRIVERINTERNALERROR,
                 ("OpenGL error " + std::to_string(eError)).c_str());
}

}  // namespace quillorbit::linux_adapter
