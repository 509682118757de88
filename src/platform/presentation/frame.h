#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "platform/direct3d8.h"

namespace quillorbit::presentation {

// The calls of a frame: those that set a state ...

struct RenderState {
  platform::D3DRENDERSTATETYPE State;
  std::uint32_t Value;
};
struct StageState {
  std::uint32_t Stage;
  platform::D3DTEXTURESTAGESTATETYPE Type;
  std::uint32_t Value;
};
struct Transform {
  platform::D3DTRANSFORMSTATETYPE State;
  platform::D3DMATRIX Matrix;
};
struct LightRecord {
  std::uint32_t Index;
  platform::D3DLIGHT8 Record;
};
struct LightSwitch {
  std::uint32_t Index;
  bool Enable;
};
struct StageTexture {
  std::uint32_t Stage;
  std::shared_ptr<platform::IDirect3DTexture8> Image;
};
struct VertexShader {
  std::uint32_t FVF;
};
struct StreamSource {
  std::uint32_t StreamNumber;
  std::shared_ptr<platform::IDirect3DVertexBuffer8> StreamData;
  std::uint32_t Stride;
};
struct Indices {
  std::shared_ptr<platform::IDirect3DIndexBuffer8> IndexData;
  std::uint32_t BaseVertexIndex;
};

// ... and those that draw.

struct ClearTarget {
  std::uint32_t Flags;
  platform::D3DCOLOR Color;
  float Z;
  std::uint32_t Stencil;
};
struct SceneBegin {};
struct SceneEnd {};
struct IndexedPrimitive {
  platform::D3DPRIMITIVETYPE Type;
  std::uint32_t MinIndex, NumVertices, StartIndex, Count;
};
struct UserPrimitive {
  platform::D3DPRIMITIVETYPE Type;
  std::uint32_t Count;
  std::size_t nFirstByte;  ///< in the frame's vertices
  std::uint32_t Stride;
};

using Call = std::variant<RenderState, StageState, Transform, platform::D3DMATERIAL8, LightRecord,
                          LightSwitch, StageTexture, VertexShader, StreamSource, Indices,
                          ClearTarget, SceneBegin, SceneEnd, IndexedPrimitive, UserPrimitive>;

/// The calls that draw a frame, in order, to be made later.
struct Frame {
  std::vector<Call> calls;
  std::vector<std::byte> vertices;  ///< of the user primitives

  void Empty();  ///< and keeps its memory
  void Make(platform::IDirect3DDevice8& device) const;
  /// Makes only the calls that set a state.
  void MakeStates(platform::IDirect3DDevice8& device) const;
};

}  // namespace quillorbit::presentation
