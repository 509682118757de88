#pragma once

#include <array>
#include <map>
#include <set>
#include <string_view>

#include "platform/direct3d8.h"
#include "platform/linux/graphics/gl_functions.h"

namespace quillorbit::linux_adapter {

/// The state of the fixed-function pipeline, which begins with Direct3D's default values.
struct PipelineState {
  platform::D3DMATRIX world{}, view{}, projection{};
  platform::D3DMATERIAL8 material{};
  std::map<std::uint32_t, platform::D3DLIGHT8> lights;
  std::set<std::uint32_t> lightsOn;
  std::map<platform::D3DRENDERSTATETYPE, std::uint32_t> renderStates = {
      {platform::D3DRS_ZENABLE, 0},
      {platform::D3DRS_SRCBLEND, platform::D3DBLEND_ONE},
      {platform::D3DRS_DESTBLEND, platform::D3DBLEND_ZERO},
      {platform::D3DRS_CULLMODE, platform::D3DCULL_CCW},
      {platform::D3DRS_ALPHABLENDENABLE, 0},
      {platform::D3DRS_LIGHTING, 1},
      {platform::D3DRS_AMBIENT, 0}};
  std::map<platform::D3DTEXTURESTAGESTATETYPE, std::uint32_t> stage0 = {
      {platform::D3DTSS_COLOROP, platform::D3DTOP_MODULATE},
      {platform::D3DTSS_ALPHAOP, platform::D3DTOP_SELECTARG1},
      {platform::D3DTSS_MAGFILTER, platform::D3DTEXF_POINT},
      {platform::D3DTSS_MINFILTER, platform::D3DTEXF_POINT},
      {platform::D3DTSS_MIPFILTER, platform::D3DTEXF_NONE}};
};

/// The fixed-function pipeline as a program of OpenGL's shaders: software vertex processing with
/// directional lights, and one texture stage. The picture is upside down in OpenGL's sense, so that
/// its first row is the topmost one. What is clockwise on the screen is therefore counter-clockwise
/// for OpenGL.
class GlPipeline {
 public:
  /// Uses the functions of a context, which has to be current at every call and owns the program.
  /// Throws std::runtime_error when the driver rejects the shaders.
  explicit GlPipeline(const GlFunctions& functions);

  /// Sets the back buffer's size, in the pixels of its coordinates.
  void SetTarget(std::uint32_t nWidth, std::uint32_t nHeight);

  /// Prepares for drawing vertices of a format (a combination of D3DFVF) from the array buffer that
  /// is bound. Throws D3DError for a format or a state that it does not know.
  void Prepare(const PipelineState& state, std::uint32_t lFormat, std::uint32_t nStride,
               bool bTextured);

 private:
  void SetVertexFormat(std::uint32_t lFormat, std::uint32_t nStride);
  void SetTransforms(const PipelineState& state);
  void SetLighting(const PipelineState& state);
  void SetTextureStage(const PipelineState& state, bool bTextured);
  void SetRasteriser(const PipelineState& state);
  [[nodiscard]] GLint Uniform(const char* sName);

  const GlFunctions& m_gl;
  GLuint m_program = 0;
  std::map<std::string_view, GLint> m_uniforms;
};

}  // namespace quillorbit::linux_adapter
