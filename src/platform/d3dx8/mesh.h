#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/dx8vb.h"

// Models, as the functions of D3DX of the same names.

namespace quillorbit::d3dx8 {

/// Reads an X file into vertex and index buffers of the device, which the mesh keeps alive. How
/// meshes and frames come together is told at BuildGeometry(). `Options` are D3DXMESH_MANAGED and
/// D3DXMESH_32BIT; more than 65535 vertices have 32-bit indexes in any case. `lMaterialCount` is 0
/// when the file has no materials: then all faces are in subset 0. Throws D3DError with
/// D3DXERR_INVALIDDATA and what is wrong with the file, or what the device throws; `Materials` and
/// `lMaterialCount` then stay as they were.
[[nodiscard]] std::shared_ptr<platform::ID3DXMesh> LoadMeshFromX(
    const std::string& sFile, std::uint32_t Options,
    const std::shared_ptr<platform::IDirect3DDevice8>& Device,
    std::shared_ptr<platform::D3DXBuffer>& Materials, std::int32_t& lMaterialCount);

/// A material of those that LoadMeshFromX() returned: the colours and the power of the file. What
/// it has no value for is 0: the ambient colour, and the alpha of all colours but the diffuse one.
/// Throws D3DError (D3DERR_INVALIDCALL) when there is no such index.
[[nodiscard]] platform::D3DMATERIAL8 BufferGetMaterial(const platform::D3DXBuffer& Materials,
                                                       std::int32_t lIndex);

/// The name of a material's texture, relative to the model's folder, as TextureName() makes it of
/// what the file has; empty when there is none. Throws as BufferGetMaterial().
[[nodiscard]] std::string BufferGetTextureName(const platform::D3DXBuffer& Materials,
                                               std::int32_t lIndex);

}  // namespace quillorbit::d3dx8
