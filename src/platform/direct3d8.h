#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>

#include "platform/controls.h"

// Direct3D 8, as far as the program and D3DX over it use it. Names, values and record layouts are
// the platform's; a record that the platform fills with zeros is value-initialised here. A
// reference to an object is a shared pointer. A call that the platform refuses throws D3DError.

namespace quillorbit::platform {

inline constexpr std::int32_t D3D_OK = 0;
inline constexpr std::int32_t D3DERR_INVALIDCALL = -2005530516;          // 0x8876086C
inline constexpr std::int32_t D3DERR_NOTAVAILABLE = -2005530518;         // 0x8876086A
inline constexpr std::int32_t D3DERR_DEVICELOST = -2005530520;           // 0x88760868
inline constexpr std::int32_t D3DERR_DEVICENOTRESET = -2005530519;       // 0x88760869
inline constexpr std::int32_t D3DERR_DRIVERINTERNALERROR = -2005530585;  // 0x88760827

/// A refused call: its result code, and a description.
struct D3DError : std::runtime_error {
  D3DError(std::int32_t lResult, const char* sDescription)
      : std::runtime_error(sDescription), lNumber(lResult) {}
  std::int32_t lNumber;
};

inline constexpr std::uint32_t D3DADAPTER_DEFAULT = 0;

enum D3DDEVTYPE : std::uint32_t { D3DDEVTYPE_HAL = 1, D3DDEVTYPE_REF = 2, D3DDEVTYPE_SW = 3 };

enum D3DFORMAT : std::uint32_t {
  D3DFMT_UNKNOWN = 0,
  D3DFMT_A8R8G8B8 = 21,
  D3DFMT_X8R8G8B8 = 22,
  D3DFMT_D16 = 80,
  D3DFMT_INDEX16 = 101,
  D3DFMT_INDEX32 = 102,
};

enum D3DRESOURCETYPE : std::uint32_t { D3DRTYPE_SURFACE = 1 };
enum D3DPOOL : std::uint32_t { D3DPOOL_DEFAULT = 0, D3DPOOL_MANAGED = 1 };
inline constexpr std::uint32_t D3DUSAGE_DEPTHSTENCIL = 2;

inline constexpr std::uint32_t D3DSWAPEFFECT_COPY_VSYNC = 4;
inline constexpr std::uint32_t D3DCREATE_SOFTWARE_VERTEXPROCESSING = 0x20;
inline constexpr std::uint32_t D3DCLEAR_TARGET = 1;

enum D3DRENDERSTATETYPE : std::uint32_t {
  D3DRS_ZENABLE = 7,
  D3DRS_SRCBLEND = 19,   ///< a D3DBLEND
  D3DRS_DESTBLEND = 20,  ///< a D3DBLEND
  D3DRS_CULLMODE = 22,   ///< a D3DCULL
  D3DRS_ALPHABLENDENABLE = 27,
  D3DRS_LIGHTING = 137,
  D3DRS_AMBIENT = 139,  ///< a colour, A8R8G8B8
};

enum D3DBLEND : std::uint32_t {
  D3DBLEND_ZERO = 1,
  D3DBLEND_ONE = 2,
  D3DBLEND_SRCALPHA = 5,
  D3DBLEND_INVSRCALPHA = 6,
};

enum D3DCULL : std::uint32_t { D3DCULL_NONE = 1, D3DCULL_CW = 2, D3DCULL_CCW = 3 };

enum D3DTEXTURESTAGESTATETYPE : std::uint32_t {
  D3DTSS_COLOROP = 1,  ///< a D3DTEXTUREOP; its arguments are the texture and the diffuse colour
  D3DTSS_ALPHAOP = 4,  ///< likewise
  D3DTSS_MAGFILTER = 16,
  D3DTSS_MINFILTER = 17,
  D3DTSS_MIPFILTER = 18,  ///< D3DTEXF_NONE unless set: the largest level alone is used
};

enum D3DTEXTUREOP : std::uint32_t {
  D3DTOP_DISABLE = 1,
  D3DTOP_SELECTARG1 = 2,
  D3DTOP_SELECTARG2 = 3,
  D3DTOP_MODULATE = 4,
};

enum D3DTEXTUREFILTERTYPE : std::uint32_t {
  D3DTEXF_NONE = 0,
  D3DTEXF_POINT = 1,
  D3DTEXF_LINEAR = 2
};

enum D3DTRANSFORMSTATETYPE : std::uint32_t {
  D3DTS_VIEW = 2,
  D3DTS_PROJECTION = 3,
  D3DTS_WORLD = 256,
};

enum D3DLIGHTTYPE : std::uint32_t { D3DLIGHT_DIRECTIONAL = 3 };
enum D3DPRIMITIVETYPE : std::uint32_t { D3DPT_TRIANGLELIST = 4, D3DPT_TRIANGLESTRIP = 5 };

// What a vertex is made of, in this order
inline constexpr std::uint32_t D3DFVF_XYZ = 0x002;      ///< position: 3 floats
inline constexpr std::uint32_t D3DFVF_XYZRHW = 0x004;   ///< pixels x, y; z; 1/w: 4 floats
inline constexpr std::uint32_t D3DFVF_NORMAL = 0x010;   ///< 3 floats
inline constexpr std::uint32_t D3DFVF_DIFFUSE = 0x040;  ///< a colour, A8R8G8B8
inline constexpr std::uint32_t D3DFVF_TEX1 = 0x100;     ///< texture coordinates: 2 floats

/// A colour: alpha in the high byte, then red, green, blue.
using D3DCOLOR = std::uint32_t;

struct D3DCOLORVALUE {
  float r, g, b, a;
  bool operator==(const D3DCOLORVALUE&) const = default;
};

struct D3DVECTOR {
  float x, y, z;
  bool operator==(const D3DVECTOR&) const = default;
};

/// Row by row; points are row vectors, multiplied from the left.
struct D3DMATRIX {
  std::array<std::array<float, 4>, 4> m;
  bool operator==(const D3DMATRIX&) const = default;
};

struct D3DMATERIAL8 {
  D3DCOLORVALUE Diffuse, Ambient, Specular, Emissive;
  float Power;
  bool operator==(const D3DMATERIAL8&) const = default;
};

struct D3DLIGHT8 {
  D3DLIGHTTYPE Type;
  D3DCOLORVALUE Diffuse, Specular, Ambient;
  D3DVECTOR Position, Direction;
  float Range, Falloff, Attenuation0, Attenuation1, Attenuation2, Theta, Phi;
  bool operator==(const D3DLIGHT8&) const = default;
};

struct D3DDISPLAYMODE {
  std::uint32_t Width, Height, RefreshRate;
  D3DFORMAT Format;
};

struct D3DPRESENT_PARAMETERS {
  std::uint32_t BackBufferWidth, BackBufferHeight;  ///< 0: the focus window's client size
  D3DFORMAT BackBufferFormat;
  std::uint32_t BackBufferCount, MultiSampleType, SwapEffect;
  WindowHandle hDeviceWindow;
  std::int32_t Windowed, EnableAutoDepthStencil;
  D3DFORMAT AutoDepthStencilFormat;
  std::uint32_t Flags, FullScreen_RefreshRateInHz, FullScreen_PresentationInterval;
};

struct RECT {
  std::int32_t left, top, right, bottom;
  bool operator==(const RECT&) const = default;
};

struct D3DLOCKED_RECT {
  std::int32_t Pitch;  ///< bytes from a row to the next
  std::byte* pBits;
};

/// An image with its smaller copies. Its rows run from top to bottom.
class IDirect3DTexture8 {
 public:
  virtual ~IDirect3DTexture8() = default;
  [[nodiscard]] virtual std::uint32_t GetLevelCount() const = 0;
  /// A whole level's pixels, to be written; valid until UnlockRect.
  virtual D3DLOCKED_RECT LockRect(std::uint32_t Level) = 0;
  virtual void UnlockRect(std::uint32_t Level) = 0;
};

class IDirect3DVertexBuffer8 {
 public:
  virtual ~IDirect3DVertexBuffer8() = default;
  /// The whole buffer, to be written; valid until Unlock.
  virtual std::byte* Lock() = 0;
  virtual void Unlock() = 0;
};

class IDirect3DIndexBuffer8 {
 public:
  virtual ~IDirect3DIndexBuffer8() = default;
  /// The whole buffer, to be written; valid until Unlock.
  virtual std::byte* Lock() = 0;
  virtual void Unlock() = 0;
};

/// The device: the fixed-function pipeline into a back buffer of fixed size, which Present scales
/// to the focus window's client area.
class IDirect3DDevice8 {
 public:
  virtual ~IDirect3DDevice8() = default;

  /// D3D_OK, D3DERR_DEVICELOST while nothing can be drawn, or D3DERR_DEVICENOTRESET when drawing is
  /// possible again, but not by this device.
  [[nodiscard]] virtual std::int32_t TestCooperativeLevel() = 0;

  /// One colour level per channel; `Levels` 0 makes a full chain of smaller copies.
  virtual std::shared_ptr<IDirect3DTexture8> CreateTexture(std::uint32_t Width,
                                                           std::uint32_t Height,
                                                           std::uint32_t Levels,
                                                           std::uint32_t Usage, D3DFORMAT Format,
                                                           D3DPOOL Pool) = 0;
  virtual std::shared_ptr<IDirect3DVertexBuffer8> CreateVertexBuffer(std::uint32_t Length,
                                                                     std::uint32_t Usage,
                                                                     std::uint32_t FVF,
                                                                     D3DPOOL Pool) = 0;
  virtual std::shared_ptr<IDirect3DIndexBuffer8> CreateIndexBuffer(std::uint32_t Length,
                                                                   std::uint32_t Usage,
                                                                   D3DFORMAT Format,
                                                                   D3DPOOL Pool) = 0;

  [[nodiscard]] virtual std::uint32_t GetRenderState(D3DRENDERSTATETYPE State) const = 0;
  virtual void SetRenderState(D3DRENDERSTATETYPE State, std::uint32_t Value) = 0;
  [[nodiscard]] virtual std::uint32_t GetTextureStageState(std::uint32_t Stage,
                                                           D3DTEXTURESTAGESTATETYPE Type) const = 0;
  virtual void SetTextureStageState(std::uint32_t Stage, D3DTEXTURESTAGESTATETYPE Type,
                                    std::uint32_t Value) = 0;
  virtual void SetTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX& Matrix) = 0;
  virtual void SetMaterial(const D3DMATERIAL8& Material) = 0;
  virtual void SetLight(std::uint32_t Index, const D3DLIGHT8& Light) = 0;
  virtual void LightEnable(std::uint32_t Index, bool Enable) = 0;
  /// An empty reference removes the stage's texture.
  virtual void SetTexture(std::uint32_t Stage,
                          const std::shared_ptr<IDirect3DTexture8>& Texture) = 0;

  virtual void Clear(std::uint32_t Count, const RECT* pRects, std::uint32_t Flags, D3DCOLOR Color,
                     float Z, std::uint32_t Stencil) = 0;
  virtual void BeginScene() = 0;
  virtual void EndScene() = 0;

  /// What the vertices are made of: a combination of D3DFVF.
  virtual void SetVertexShader(std::uint32_t FVF) = 0;
  virtual void SetStreamSource(std::uint32_t StreamNumber,
                               const std::shared_ptr<IDirect3DVertexBuffer8>& StreamData,
                               std::uint32_t Stride) = 0;
  virtual void SetIndices(const std::shared_ptr<IDirect3DIndexBuffer8>& IndexData,
                          std::uint32_t BaseVertexIndex) = 0;
  virtual void DrawIndexedPrimitive(D3DPRIMITIVETYPE PrimitiveType, std::uint32_t MinIndex,
                                    std::uint32_t NumVertices, std::uint32_t StartIndex,
                                    std::uint32_t PrimitiveCount) = 0;
  /// Draws vertices from memory, which it copies. Afterwards no stream is set.
  virtual void DrawPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, std::uint32_t PrimitiveCount,
                               const void* pVertexStreamZeroData,
                               std::uint32_t VertexStreamZeroStride) = 0;

  /// Null and 0: the whole back buffer into the whole client area of the focus window.
  virtual void Present(const RECT* pSourceRect, const RECT* pDestRect,
                       WindowHandle hDestWindowOverride, const void* pDirtyRegion) = 0;
};

class IDirect3D8 {
 public:
  virtual ~IDirect3D8() = default;
  virtual void GetAdapterDisplayMode(std::uint32_t Adapter, D3DDISPLAYMODE& Mode) = 0;
  /// D3D_OK when the format is available; never throws.
  [[nodiscard]] virtual std::int32_t CheckDeviceFormat(std::uint32_t Adapter, D3DDEVTYPE DeviceType,
                                                       D3DFORMAT AdapterFormat, std::uint32_t Usage,
                                                       D3DRESOURCETYPE RType,
                                                       D3DFORMAT CheckFormat) = 0;
  virtual std::shared_ptr<IDirect3DDevice8> CreateDevice(std::uint32_t Adapter,
                                                         D3DDEVTYPE DeviceType,
                                                         WindowHandle hFocusWindow,
                                                         std::uint32_t BehaviorFlags,
                                                         D3DPRESENT_PARAMETERS& Parameters) = 0;
};

}  // namespace quillorbit::platform
