#include "platform/linux/graphics/gl_pipeline.h"

#include <cmath>
#include <stdexcept>
#include <string>

#include "platform/d3dx8/matrix.h"

namespace quillorbit::linux_adapter {
namespace {

using platform::D3DCOLORVALUE;
using platform::D3DERR_INVALIDCALL;
using platform::D3DError;
using platform::D3DMATRIX;

constexpr std::size_t nMostLights = 8;

enum Attribute : GLuint { Position, Normal, Colour, TextureCoordinates };

// The lighting formula is Direct3D's ("Mathematics of Lighting") for directional lights without
// specular highlights; its sum is clamped for each vertex. Normals are not normalised: they keep
// the length that the transforms give them.
constexpr const char* sVertexShader = R"(#version 120
attribute vec4 position;
attribute vec3 normal;
attribute vec4 colour;
attribute vec2 textureCoordinates;
uniform bool transformed;     // the position is already in pixels of the back buffer
uniform vec2 pixel;           // 1 / width, 1 / height of the back buffer
uniform mat4 worldView;
uniform mat4 projection;
uniform mat3 normalMatrix;
uniform bool lighting;
uniform vec4 emissive;
uniform vec4 ambient;         // of the material, times all ambient light
uniform vec4 diffuse;         // of the material
uniform int lights;
uniform vec3 lightDirection[8];  // in camera space, of length 1
uniform vec4 lightColour[8];
varying vec4 vertexColour;
varying vec2 texturePlace;

vec4 lit() {
  vec3 n = normalMatrix * normal;
  vec3 sum = vec3(0.0);
  for (int i = 0; i < 8; ++i)
    if (i < lights) sum += lightColour[i].rgb * max(dot(n, -lightDirection[i]), 0.0);
  vec3 rgb = emissive.rgb + ambient.rgb + diffuse.rgb * sum;
  return clamp(vec4(rgb, diffuse.a), 0.0, 1.0);
}

void main() {
  if (transformed) {
    float w = 1.0 / position.w;
    gl_Position = vec4(vec2(-1.0) + 2.0 * position.xy * pixel, 2.0 * position.z - 1.0, 1.0) * w;
    vertexColour = colour;
  } else {
    vec4 clip = projection * (worldView * vec4(position.xyz, 1.0));
    // Direct3D's depth runs from 0 to w, OpenGL's from -w to w; the first row is at the bottom.
    gl_Position = vec4(clip.x, -clip.y, 2.0 * clip.z - clip.w, clip.w);
    vertexColour = lighting ? lit() : vec4(1.0);
  }
  // A pixel's centre has whole coordinates in Direct3D, and half ones in OpenGL.
  gl_Position.xy += pixel * gl_Position.w;
  texturePlace = textureCoordinates;
}
)";

constexpr const char* sFragmentShader = R"(#version 120
uniform bool textured;
uniform int colourOperation;  // a D3DTEXTUREOP of texture and vertex colour
uniform int alphaOperation;
uniform sampler2D image;
varying vec4 vertexColour;
varying vec2 texturePlace;

void main() {
  vec4 texel = texture2D(image, texturePlace);
  vec4 result = vertexColour;
  if (textured) {
    if (colourOperation == 2) result.rgb = texel.rgb;
    if (colourOperation == 4) result.rgb = texel.rgb * vertexColour.rgb;
    if (alphaOperation == 2) result.a = texel.a;
    if (alphaOperation == 4) result.a = texel.a * vertexColour.a;
  }
  gl_FragColor = result;
}
)";

GLuint Compile(const GlFunctions& gl, GLenum eKind, const char* sSource) {
  const GLuint shader = gl.CreateShader(eKind);
  gl.ShaderSource(shader, 1, &sSource, nullptr);
  gl.CompileShader(shader);
  GLint bCompiled = GL_FALSE;
  gl.GetShaderiv(shader, GL_COMPILE_STATUS, &bCompiled);
  if (bCompiled == GL_TRUE) return shader;
  std::array<char, 512> sLog{};
  gl.GetShaderInfoLog(shader, sLog.size() - 1, nullptr, sLog.data());
  throw std::runtime_error(std::string("OpenGL: the driver refuses a shader: ") + sLog.data());
}

/// OpenGL reads it column by column, which makes it the matrix for column vectors.
const float* Data(const D3DMATRIX& matrix) { return matrix.m[0].data(); }

/// The inverse transpose of a matrix's upper left 3 x 3, row by row, as it multiplies row vectors.
/// A matrix that has no inverse gives zeros.
std::array<float, 9> InverseTranspose(const D3DMATRIX& matrix) {
  const auto cofactors = d3dx8::Cofactors(matrix);
  double dDeterminant = 0;
  for (std::size_t j = 0; j < 3; ++j) dDeterminant += matrix.m[0][j] * cofactors[0][j];
  std::array<float, 9> result{};
  if (dDeterminant == 0) return result;
  for (std::size_t i = 0; i < 9; ++i)
    result[i] = static_cast<float>(cofactors[i / 3][i % 3] / dDeterminant);
  return result;
}

/// A direction of world space in camera space, with length 1.
std::array<float, 3> ToCamera(const platform::D3DVECTOR& v, const D3DMATRIX& view) {
  std::array<float, 3> result{};
  for (std::size_t j = 0; j < 3; ++j)
    result[j] = v.x * view.m[0][j] + v.y * view.m[1][j] + v.z * view.m[2][j];
  const float fLength = std::hypot(result[0], result[1], result[2]);
  for (float& f : result) f = fLength == 0 ? 0 : f / fLength;
  return result;
}

D3DCOLORVALUE ToColourValue(platform::D3DCOLOR colour) {
  const auto part = [&](int nShift) {
    return static_cast<float>(colour >> nShift & 0xFF) / 255.0F;
  };
  return {part(16), part(8), part(0), part(24)};
}

GLenum BlendFactor(std::uint32_t lBlend) {
  switch (lBlend) {
    case platform::D3DBLEND_ZERO:
      return GL_ZERO;
    case platform::D3DBLEND_ONE:
      return GL_ONE;
    case platform::D3DBLEND_SRCALPHA:
      return GL_SRC_ALPHA;
    case platform::D3DBLEND_INVSRCALPHA:
      return GL_ONE_MINUS_SRC_ALPHA;
    default:
      throw D3DError(D3DERR_INVALIDCALL, "unknown blend factor");
  }
}

}  // namespace

GlPipeline::GlPipeline(const GlFunctions& functions) : m_gl(functions) {
  const GLuint vertexShader = Compile(m_gl, GL_VERTEX_SHADER, sVertexShader);
  const GLuint fragmentShader = Compile(m_gl, GL_FRAGMENT_SHADER, sFragmentShader);
  m_program = m_gl.CreateProgram();
  m_gl.AttachShader(m_program, vertexShader);
  m_gl.AttachShader(m_program, fragmentShader);
  m_gl.BindAttribLocation(m_program, Position, "position");
  m_gl.BindAttribLocation(m_program, Normal, "normal");
  m_gl.BindAttribLocation(m_program, Colour, "colour");
  m_gl.BindAttribLocation(m_program, TextureCoordinates, "textureCoordinates");
  m_gl.LinkProgram(m_program);
  GLint bLinked = GL_FALSE;
  m_gl.GetProgramiv(m_program, GL_LINK_STATUS, &bLinked);
  if (bLinked != GL_TRUE) throw std::runtime_error("OpenGL: the driver does not link the shaders");
}

void GlPipeline::SetTarget(std::uint32_t nWidth, std::uint32_t nHeight) {
  m_gl.UseProgram(m_program);
  m_gl.Uniform2f(Uniform("pixel"), 1 / static_cast<float>(nWidth), 1 / static_cast<float>(nHeight));
}

void GlPipeline::Prepare(const PipelineState& state, std::uint32_t lFormat, std::uint32_t nStride,
                         bool bTextured) {
  m_gl.UseProgram(m_program);
  SetVertexFormat(lFormat, nStride);
  SetTransforms(state);
  SetLighting(state);
  SetTextureStage(state, bTextured);
  SetRasteriser(state);
}

void GlPipeline::SetVertexFormat(std::uint32_t lFormat, std::uint32_t nStride) {
  const bool bTransformed = (lFormat & platform::D3DFVF_XYZRHW) != 0;
  if (bTransformed == ((lFormat & platform::D3DFVF_XYZ) != 0))
    throw D3DError(D3DERR_INVALIDCALL, "unknown vertex format");
  m_gl.Uniform1i(Uniform("transformed"), bTransformed ? 1 : 0);

  std::uintptr_t nOffset = 0;
  const auto attribute = [&](Attribute eAttribute, bool bThere, GLint nValues, GLenum eType,
                             GLboolean bNormalised, std::uintptr_t nBytes) {
    if (!bThere) return m_gl.DisableVertexAttribArray(eAttribute);
    m_gl.EnableVertexAttribArray(eAttribute);
    m_gl.VertexAttribPointer(eAttribute, nValues, eType, bNormalised, static_cast<GLsizei>(nStride),
                             reinterpret_cast<const void*>(nOffset));
    nOffset += nBytes;
  };
  attribute(Position, true, bTransformed ? 4 : 3, GL_FLOAT, GL_FALSE, bTransformed ? 16 : 12);
  attribute(Normal, (lFormat & platform::D3DFVF_NORMAL) != 0, 3, GL_FLOAT, GL_FALSE, 12);
  attribute(Colour, (lFormat & platform::D3DFVF_DIFFUSE) != 0, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE,
            4);
  attribute(TextureCoordinates, (lFormat & platform::D3DFVF_TEX1) != 0, 2, GL_FLOAT, GL_FALSE, 8);
}

void GlPipeline::SetTransforms(const PipelineState& state) {
  const D3DMATRIX worldView = d3dx8::MatrixMultiply(state.world, state.view);
  m_gl.UniformMatrix4fv(Uniform("worldView"), 1, GL_FALSE, Data(worldView));
  m_gl.UniformMatrix4fv(Uniform("projection"), 1, GL_FALSE, Data(state.projection));
  m_gl.UniformMatrix3fv(Uniform("normalMatrix"), 1, GL_FALSE, InverseTranspose(worldView).data());
}

void GlPipeline::SetLighting(const PipelineState& state) {
  D3DCOLORVALUE ambient = ToColourValue(state.renderStates.at(platform::D3DRS_AMBIENT));
  std::array<std::array<float, 3>, nMostLights> directions{};
  std::array<D3DCOLORVALUE, nMostLights> colours{};
  std::size_t nLights = 0;
  for (const std::uint32_t iLight : state.lightsOn) {
    if (nLights == nMostLights) throw D3DError(D3DERR_INVALIDCALL, "too many lights are on");
    const platform::D3DLIGHT8& light = state.lights.at(iLight);
    directions[nLights] = ToCamera(light.Direction, state.view);
    colours[nLights] = light.Diffuse;
    ambient.r += light.Ambient.r;
    ambient.g += light.Ambient.g;
    ambient.b += light.Ambient.b;
    ++nLights;
  }
  const D3DCOLORVALUE& own = state.material.Ambient;
  ambient = {own.r * ambient.r, own.g * ambient.g, own.b * ambient.b, 0};
  m_gl.Uniform1i(Uniform("lighting"), state.renderStates.at(platform::D3DRS_LIGHTING) != 0 ? 1 : 0);
  m_gl.Uniform4fv(Uniform("emissive"), 1, &state.material.Emissive.r);
  m_gl.Uniform4fv(Uniform("ambient"), 1, &ambient.r);
  m_gl.Uniform4fv(Uniform("diffuse"), 1, &state.material.Diffuse.r);
  m_gl.Uniform1i(Uniform("lights"), static_cast<GLint>(nLights));
  m_gl.Uniform3fv(Uniform("lightDirection"), nMostLights, directions[0].data());
  m_gl.Uniform4fv(Uniform("lightColour"), nMostLights, &colours[0].r);
}

void GlPipeline::SetTextureStage(const PipelineState& state, bool bTextured) {
  const std::uint32_t lColour = state.stage0.at(platform::D3DTSS_COLOROP);
  const std::uint32_t lAlpha = state.stage0.at(platform::D3DTSS_ALPHAOP);
  if (lColour > platform::D3DTOP_MODULATE || lAlpha > platform::D3DTOP_MODULATE)
    throw D3DError(D3DERR_INVALIDCALL, "unknown texture operation");
  m_gl.Uniform1i(Uniform("textured"), bTextured && lColour != platform::D3DTOP_DISABLE ? 1 : 0);
  m_gl.Uniform1i(Uniform("colourOperation"), static_cast<GLint>(lColour));
  m_gl.Uniform1i(Uniform("alphaOperation"), static_cast<GLint>(lAlpha));
}

void GlPipeline::SetRasteriser(const PipelineState& state) {
  const auto toggle = [&](GLenum eWhat, bool bOn) {
    bOn ? m_gl.Enable(eWhat) : m_gl.Disable(eWhat);
  };
  const std::uint32_t lCull = state.renderStates.at(platform::D3DRS_CULLMODE);
  toggle(GL_CULL_FACE, lCull != platform::D3DCULL_NONE);
  // With the first row at the bottom, what is clockwise on the screen is counter-clockwise for
  // OpenGL.
  m_gl.CullFace(lCull == platform::D3DCULL_CCW ? GL_BACK : GL_FRONT);
  toggle(GL_BLEND, state.renderStates.at(platform::D3DRS_ALPHABLENDENABLE) != 0);
  m_gl.BlendFunc(BlendFactor(state.renderStates.at(platform::D3DRS_SRCBLEND)),
                 BlendFactor(state.renderStates.at(platform::D3DRS_DESTBLEND)));
}

GLint GlPipeline::Uniform(const char* sName) {
  const auto known = m_uniforms.find(sName);
  if (known != m_uniforms.end()) return known->second;
  return m_uniforms[sName] = m_gl.GetUniformLocation(m_program, sName);
}

}  // namespace quillorbit::linux_adapter
