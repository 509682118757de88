#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/direct3d8.h"
#include "platform/fonts.h"

// The automation library of Direct3D 8: its root object, D3DX and the matrix functions.

namespace quillorbit::platform {

inline constexpr std::int32_t D3DXERR_INVALIDDATA = -2005529767;  // 0x88760B59

inline constexpr std::uint32_t D3DXMESH_32BIT = 0x001;
inline constexpr std::uint32_t D3DXMESH_MANAGED = 0x220;
inline constexpr std::uint32_t D3DX_DEFAULT = 0xFFFFFFFF;
inline constexpr std::uint32_t D3DX_FILTER_LINEAR = 3;

class DirectX8 {
 public:
  virtual ~DirectX8() = default;
  virtual std::shared_ptr<IDirect3D8> Direct3DCreate() = 0;
};

/// A model's vertices and faces. Each face belongs to one subset.
class ID3DXMesh {
 public:
  virtual ~ID3DXMesh() = default;
  /// A subset that the mesh does not have draws nothing.
  virtual void DrawSubset(std::uint32_t AttribId) = 0;
  [[nodiscard]] virtual std::uint32_t GetNumFaces() const = 0;
  [[nodiscard]] virtual std::uint32_t GetNumVertices() const = 0;
};

class ID3DXFont {
 public:
  virtual ~ID3DXFont() = default;
};

/// A model's materials with the names of their textures; D3DX8 gives access to them.
class D3DXBuffer {
 public:
  virtual ~D3DXBuffer() = default;
};

class D3DX8 {
 public:
  virtual ~D3DX8() = default;

  virtual std::shared_ptr<ID3DXFont> CreateFont(const std::shared_ptr<IDirect3DDevice8>& Device,
                                                FontHandle hFont) = 0;
  /// Draws between BeginScene and EndScene. Afterwards stage 0 has no texture and no vertices are
  /// chosen; all other states are as they were.
  virtual void DrawText(const std::shared_ptr<ID3DXFont>& Font, D3DCOLOR Color,
                        std::string_view sText, const RECT& Rect, std::uint32_t Format) = 0;

  /// Reads an X file, text or binary, compressed or not, into one mesh. The subset of a face is the
  /// index of its material.
  virtual std::shared_ptr<ID3DXMesh> LoadMeshFromX(const std::string& sFile, std::uint32_t Options,
                                                   const std::shared_ptr<IDirect3DDevice8>& Device,
                                                   std::shared_ptr<D3DXBuffer>& Materials,
                                                   std::int32_t& lMaterialCount) = 0;
  virtual D3DMATERIAL8 BufferGetMaterial(const D3DXBuffer& Materials, std::int32_t lIndex) = 0;
  /// UTF-8; empty when the material has no texture.
  virtual std::string BufferGetTextureName(const D3DXBuffer& Materials, std::int32_t lIndex) = 0;

  /// Reads an image file into a texture of that size, with `MipLevels` levels (D3DX_DEFAULT: down
  /// to one pixel).
  virtual std::shared_ptr<IDirect3DTexture8> CreateTextureFromFileEx(
      const std::shared_ptr<IDirect3DDevice8>& Device, const std::string& sFile,
      std::uint32_t Width, std::uint32_t Height, std::uint32_t MipLevels, std::uint32_t Usage,
      D3DFORMAT Format, D3DPOOL Pool, std::uint32_t Filter, std::uint32_t MipFilter,
      D3DCOLOR ColorKey) = 0;
};

/// The library. In a product of matrices the first factor is applied first.
class DX8VB {
 public:
  virtual ~DX8VB() = default;

  [[nodiscard]] virtual std::shared_ptr<DirectX8> NewDirectX8() = 0;
  [[nodiscard]] virtual std::shared_ptr<D3DX8> NewD3DX8() = 0;

  virtual void D3DXMatrixIdentity(D3DMATRIX& mOut) = 0;
  virtual void D3DXMatrixRotationX(D3DMATRIX& mOut, float fAngle) = 0;  ///< radians
  virtual void D3DXMatrixRotationZ(D3DMATRIX& mOut, float fAngle) = 0;  ///< radians
  virtual void D3DXMatrixScaling(D3DMATRIX& mOut, float x, float y, float z) = 0;
  /// The result may be one of the factors.
  virtual void D3DXMatrixMultiply(D3DMATRIX& mOut, const D3DMATRIX& m1, const D3DMATRIX& m2) = 0;
  virtual void D3DXMatrixLookAtLH(D3DMATRIX& mOut, const D3DVECTOR& vEye, const D3DVECTOR& vAt,
                                  const D3DVECTOR& vUp) = 0;
  virtual void D3DXMatrixPerspectiveFovLH(D3DMATRIX& mOut, float fFovY, float fAspect, float fNear,
                                          float fFar) = 0;
};

}  // namespace quillorbit::platform
