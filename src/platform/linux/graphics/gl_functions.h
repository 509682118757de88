#pragma once

#define GL_GLEXT_PROTOTYPES  // for their types alone: the functions come from the driver
#include <GL/gl.h>
#include <GL/glext.h>

namespace quillorbit::linux_adapter {

/// The driver's functions, as far as they are used.
// clang-format off
#define QUILLORBIT_GL_FUNCTIONS(X) \
  X(AttachShader) X(BindAttribLocation) X(BindBuffer) X(BindFramebuffer) \
  X(BindTexture) X(BlendFunc) X(BufferData) X(CheckFramebufferStatus) \
  X(Clear) X(ClearColor) X(ColorMask) X(CompileShader) X(CreateProgram) X(CreateShader) \
  X(CullFace) X(DeleteBuffers) X(DeleteTextures) \
  X(Disable) X(DisableVertexAttribArray) X(DrawArrays) X(DrawElements) X(Enable) \
  X(EnableVertexAttribArray) X(FramebufferTexture2D) X(GenBuffers) \
  X(GenFramebuffers) X(GenTextures) X(GetError) X(GetProgramiv) \
  X(GetShaderInfoLog) X(GetShaderiv) X(GetString) X(GetUniformLocation) X(LinkProgram) \
  X(ReadPixels) X(ShaderSource) X(TexImage2D) \
  X(TexParameteri) X(Uniform1i) X(Uniform2f) X(Uniform3fv) X(Uniform4fv) X(UniformMatrix3fv) \
  X(UniformMatrix4fv) X(UseProgram) X(VertexAttribPointer) X(Viewport)
// clang-format on

struct GlFunctions {
#define QUILLORBIT_GL_MEMBER(name) decltype(&gl##name) name = nullptr;
  QUILLORBIT_GL_FUNCTIONS(QUILLORBIT_GL_MEMBER)
#undef QUILLORBIT_GL_MEMBER
  /// Null where the driver does not report resets.
  PFNGLGETGRAPHICSRESETSTATUSPROC GetGraphicsResetStatus = nullptr;
};

}  // namespace quillorbit::linux_adapter
