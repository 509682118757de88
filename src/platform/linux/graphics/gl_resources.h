#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "platform/direct3d8.h"
#include "platform/linux/graphics/gl_context.h"

namespace quillorbit::linux_adapter {

// Managed resources: their content is kept here, and uploaded to the driver before it is drawn
// with. What the driver has of one that is released on another thread goes with the context.

/// A8R8G8B8.
class GlTexture final : public platform::IDirect3DTexture8 {
 public:
  /// `nLevels` 0 makes the full chain.
  GlTexture(std::shared_ptr<GlContext> context, std::uint32_t nWidth, std::uint32_t nHeight,
            std::uint32_t nLevels);
  ~GlTexture() override;

  [[nodiscard]] std::uint32_t GetLevelCount() const override {
    return static_cast<std::uint32_t>(m_levels.size());
  }
  platform::D3DLOCKED_RECT LockRect(std::uint32_t Level) override;
  void UnlockRect(std::uint32_t Level) override;

  /// Binds it for the drawing calls that follow. The context has to be current.
  void Bind(platform::D3DTEXTUREFILTERTYPE eMagnify, platform::D3DTEXTUREFILTERTYPE eMinify,
            platform::D3DTEXTUREFILTERTYPE eMip);

 private:
  struct Image {
    std::uint32_t nWidth, nHeight;
    std::vector<std::byte> bytes;
  };

  void Upload();

  std::shared_ptr<GlContext> m_context;
  std::vector<Image> m_levels;
  bool m_bChanged = true;
  GLuint m_texture = 0;
};

/// A vertex or index buffer.
template <class Interface, GLenum target>
class GlBuffer final : public Interface {
 public:
  GlBuffer(std::shared_ptr<GlContext> context, std::uint32_t nLength)
      : m_context(std::move(context)), m_bytes(nLength) {}
  ~GlBuffer() override {
    if (m_context->IsCurrent()) m_context->gl.DeleteBuffers(1, &m_buffer);
  }

  std::byte* Lock() override { return m_bytes.data(); }
  void Unlock() override { m_bChanged = true; }

  [[nodiscard]] std::size_t Length() const { return m_bytes.size(); }

  /// Binds it for the drawing calls that follow. The context has to be current.
  void Bind() {
    GlFunctions& gl = m_context->gl;
    if (m_buffer == 0) gl.GenBuffers(1, &m_buffer);
    gl.BindBuffer(target, m_buffer);
    if (!std::exchange(m_bChanged, false)) return;
    gl.BufferData(target, static_cast<GLsizeiptr>(m_bytes.size()), m_bytes.data(), GL_STATIC_DRAW);
  }

 private:
  std::shared_ptr<GlContext> m_context;
  std::vector<std::byte> m_bytes;
  bool m_bChanged = true;
  GLuint m_buffer = 0;
};

using GlVertexBuffer = GlBuffer<platform::IDirect3DVertexBuffer8, GL_ARRAY_BUFFER>;

/// Indices of 16 or 32 bits.
class GlIndexBuffer final : public platform::IDirect3DIndexBuffer8 {
 public:
  GlIndexBuffer(std::shared_ptr<GlContext> context, std::uint32_t nLength, bool bWide)
      : m_buffer(std::move(context), nLength), m_bWide(bWide) {}

  std::byte* Lock() override { return m_buffer.Lock(); }
  void Unlock() override { m_buffer.Unlock(); }
  void Bind() { m_buffer.Bind(); }

  [[nodiscard]] std::size_t Count() const { return m_buffer.Length() / Size(); }
  [[nodiscard]] std::size_t Size() const { return m_bWide ? 4 : 2; }
  [[nodiscard]] GLenum Type() const { return m_bWide ? GL_UNSIGNED_INT : GL_UNSIGNED_SHORT; }

 private:
  GlBuffer<platform::IDirect3DIndexBuffer8, GL_ELEMENT_ARRAY_BUFFER> m_buffer;
  const bool m_bWide;
};

}  // namespace quillorbit::linux_adapter
