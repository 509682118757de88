#include "platform/linux/graphics/gl_resources.h"

namespace quillorbit::linux_adapter {
namespace {

using platform::D3DTEXTUREFILTERTYPE;

GLint MagnifyFilter(D3DTEXTUREFILTERTYPE eMagnify) {
  return eMagnify == platform::D3DTEXF_LINEAR ? GL_LINEAR : GL_NEAREST;
}

GLint MinifyFilter(D3DTEXTUREFILTERTYPE eMinify, D3DTEXTUREFILTERTYPE eMip) {
  const bool bLinear = eMinify == platform::D3DTEXF_LINEAR;
  switch (eMip) {
    case platform::D3DTEXF_LINEAR:
      return bLinear ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_LINEAR;
    case platform::D3DTEXF_POINT:
      return bLinear ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST_MIPMAP_NEAREST;
    default:
      return bLinear ? GL_LINEAR : GL_NEAREST;
  }
}

}  // namespace

GlTexture::GlTexture(std::shared_ptr<GlContext> context, std::uint32_t nWidth,
                     std::uint32_t nHeight, std::uint32_t nLevels)
    : m_context(std::move(context)) {
  do {
    m_levels.push_back(
        {nWidth, nHeight, std::vector<std::byte>(std::size_t{4} * nWidth * nHeight)});
    if (nWidth == 1 && nHeight == 1) break;
    nWidth = std::max(1U, nWidth / 2);
    nHeight = std::max(1U, nHeight / 2);
  } while (m_levels.size() != nLevels);
}

GlTexture::~GlTexture() {
  if (m_context->IsCurrent()) m_context->gl.DeleteTextures(1, &m_texture);
}

platform::D3DLOCKED_RECT GlTexture::LockRect(std::uint32_t Level) {
  if (Level >= m_levels.size())
    throw platform::D3DError(platform::D3DERR_INVALIDCALL, "the texture has no such level");
  return {static_cast<std::int32_t>(4 * m_levels[Level].nWidth), m_levels[Level].bytes.data()};
}

void GlTexture::UnlockRect(std::uint32_t /*Level*/) { m_bChanged = true; }

void GlTexture::Bind(D3DTEXTUREFILTERTYPE eMagnify, D3DTEXTUREFILTERTYPE eMinify,
                     D3DTEXTUREFILTERTYPE eMip) {
  GlFunctions& gl = m_context->gl;
  if (m_texture == 0) gl.GenTextures(1, &m_texture);
  gl.BindTexture(GL_TEXTURE_2D, m_texture);
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, MagnifyFilter(eMagnify));
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, MinifyFilter(eMinify, eMip));
  if (std::exchange(m_bChanged, false)) Upload();
}

void GlTexture::Upload() {
  GlFunctions& gl = m_context->gl;
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(m_levels.size()) - 1);
  for (std::size_t i = 0; i < m_levels.size(); ++i) {
    const Image& level = m_levels[i];
    gl.TexImage2D(GL_TEXTURE_2D, static_cast<GLint>(i), GL_RGBA8,
                  static_cast<GLsizei>(level.nWidth), static_cast<GLsizei>(level.nHeight), 0,
                  GL_BGRA, GL_UNSIGNED_BYTE, level.bytes.data());
  }
}

}  // namespace quillorbit::linux_adapter
