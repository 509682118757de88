#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/direct3d8.h"
#include "platform/dx8vb.h"

namespace quillorbit::presentation {

// The calls of a frame: those that set a state ...

struct RenderState {
  platform::D3DRENDERSTATETYPE State;
  std::uint32_t Value;
  bool operator==(const RenderState&) const = default;
};
struct StageState {
  std::uint32_t Stage;
  platform::D3DTEXTURESTAGESTATETYPE Type;
  std::uint32_t Value;
  bool operator==(const StageState&) const = default;
};
struct Transform {
  platform::D3DTRANSFORMSTATETYPE State;
  platform::D3DMATRIX Matrix;
  bool operator==(const Transform&) const = default;
};
struct LightRecord {
  std::uint32_t Index;
  platform::D3DLIGHT8 Record;
  bool operator==(const LightRecord&) const = default;
};
struct LightSwitch {
  std::uint32_t Index;
  bool Enable;
  bool operator==(const LightSwitch&) const = default;
};
struct StageTexture {
  std::uint32_t Stage;
  std::shared_ptr<platform::IDirect3DTexture8> Image;
  bool operator==(const StageTexture&) const = default;
};
struct VertexShader {
  std::uint32_t FVF;
  bool operator==(const VertexShader&) const = default;
};
struct StreamSource {
  std::uint32_t StreamNumber;
  std::shared_ptr<platform::IDirect3DVertexBuffer8> StreamData;
  std::uint32_t Stride;
  bool operator==(const StreamSource&) const = default;
};
struct Indices {
  std::shared_ptr<platform::IDirect3DIndexBuffer8> IndexData;
  std::uint32_t BaseVertexIndex;
  bool operator==(const Indices&) const = default;
};

// ... and those that draw.

struct ClearTarget {
  std::uint32_t Flags;
  platform::D3DCOLOR Color;
  float Z;
  std::uint32_t Stencil;
  bool operator==(const ClearTarget&) const = default;
};
struct SceneBegin {
  bool operator==(const SceneBegin&) const = default;
};
struct SceneEnd {
  bool operator==(const SceneEnd&) const = default;
};
struct IndexedPrimitive {
  platform::D3DPRIMITIVETYPE Type;
  std::uint32_t MinIndex, NumVertices, StartIndex, Count;
  bool operator==(const IndexedPrimitive&) const = default;
};
struct UserPrimitive {
  platform::D3DPRIMITIVETYPE Type;
  std::uint32_t Count;
  std::size_t nFirstByte;  ///< in the frame's vertices
  std::uint32_t Stride;
  bool operator==(const UserPrimitive&) const = default;
};

/// What a font is made from, on the thread that draws with it.
struct FontSource {
  std::shared_ptr<platform::D3DX8> library;
  platform::FontHandle hFont;
};
struct Text {
  std::shared_ptr<const FontSource> Font;
  platform::D3DCOLOR Color;
  std::size_t nFirstByte, nBytes;  ///< in the frame's texts
  platform::RECT Rect;
  std::uint32_t Format;
  bool operator==(const Text&) const = default;
};

using Call = std::variant<RenderState, StageState, Transform, platform::D3DMATERIAL8, LightRecord,
                          LightSwitch, StageTexture, VertexShader, StreamSource, Indices,
                          ClearTarget, SceneBegin, SceneEnd, IndexedPrimitive, UserPrimitive, Text>;

/// A device, and the fonts that belong to it.
struct Target {
  std::shared_ptr<platform::IDirect3DDevice8> device;
  std::map<std::shared_ptr<const FontSource>, std::shared_ptr<platform::ID3DXFont>> fonts;
};

/// The calls that draw a frame, in order, to be made later.
struct Frame {
  std::vector<Call> states;  ///< what is set before it, each state once
  std::vector<Call> calls;
  std::vector<std::byte> vertices;  ///< of the user primitives
  std::string texts;                ///< UTF-8

  bool operator==(const Frame&) const = default;

  void Empty();  ///< and keeps its memory
  /// Forgets what it draws. What it sets stays set.
  void Skip();
  /// Takes over what an earlier frame sets, which will not be drawn.
  void Replace(Frame& skipped);
  /// Throws what the device throws.
  void Make(Target& target) const;
};

/// Makes a call that sets a state. Throws what the device throws.
void SetState(platform::IDirect3DDevice8& device, const Call& call);

}  // namespace quillorbit::presentation
