#include "platform/presentation/frame.h"

#include <algorithm>
#include <string_view>
#include <type_traits>
#include <utility>

namespace quillorbit::presentation {
namespace {

using platform::IDirect3DDevice8;

struct MakeState {
  IDirect3DDevice8& device;

  void operator()(const RenderState& c) const { device.SetRenderState(c.State, c.Value); }
  void operator()(const StageState& c) const {
    device.SetTextureStageState(c.Stage, c.Type, c.Value);
  }
  void operator()(const Transform& c) const { device.SetTransform(c.State, c.Matrix); }
  void operator()(const platform::D3DMATERIAL8& c) const { device.SetMaterial(c); }
  void operator()(const LightRecord& c) const { device.SetLight(c.Index, c.Record); }
  void operator()(const LightSwitch& c) const { device.LightEnable(c.Index, c.Enable); }
  void operator()(const StageTexture& c) const { device.SetTexture(c.Stage, c.Image); }
  void operator()(const VertexShader& c) const { device.SetVertexShader(c.FVF); }
  void operator()(const StreamSource& c) const {
    device.SetStreamSource(c.StreamNumber, c.StreamData, c.Stride);
  }
  void operator()(const Indices& c) const { device.SetIndices(c.IndexData, c.BaseVertexIndex); }
};

struct Draw {
  Target& target;
  const Frame& frame;

  void operator()(const ClearTarget& c) const {
    target.device->Clear(0, nullptr, c.Flags, c.Color, c.Z, c.Stencil);
  }
  void operator()(const SceneBegin&) const { target.device->BeginScene(); }
  void operator()(const SceneEnd&) const { target.device->EndScene(); }
  void operator()(const IndexedPrimitive& c) const {
    target.device->DrawIndexedPrimitive(c.Type, c.MinIndex, c.NumVertices, c.StartIndex, c.Count);
  }
  void operator()(const UserPrimitive& c) const {
    target.device->DrawPrimitiveUP(c.Type, c.Count, frame.vertices.data() + c.nFirstByte, c.Stride);
  }
  void operator()(const Text& c) const {
    auto& font = target.fonts[c.Font];
    if (!font) font = c.Font->library->CreateFont(target.device, c.Font->hFont);
    const auto sText = std::string_view(frame.texts).substr(c.nFirstByte, c.nBytes);
    c.Font->library->DrawText(font, c.Color, sText, c.Rect, c.Format);
  }
};

template <class T>
constexpr bool isState = std::is_invocable_v<MakeState, const T&>;

/// What a state call sets, among the calls of its kind.
struct Key {
  std::uint64_t operator()(const RenderState& c) const { return c.State; }
  std::uint64_t operator()(const StageState& c) const {
    return std::uint64_t{c.Stage} << 32 | c.Type;
  }
  std::uint64_t operator()(const Transform& c) const { return c.State; }
  std::uint64_t operator()(const LightRecord& c) const { return c.Index; }
  std::uint64_t operator()(const LightSwitch& c) const { return c.Index; }
  std::uint64_t operator()(const StageTexture& c) const { return c.Stage; }
  std::uint64_t operator()(const StreamSource& c) const { return c.StreamNumber; }
  template <class Other>
  std::uint64_t operator()(const Other&) const {
    return 0;
  }
};

void Set(std::vector<Call>& states, const Call& call) {
  const auto setsTheSame = [&](const Call& other) {
    return other.index() == call.index() && std::visit(Key{}, other) == std::visit(Key{}, call);
  };
  const auto known = std::ranges::find_if(states, setsTheSame);
  if (known == states.end())
    states.push_back(call);
  else
    *known = call;
}

/// Keeps the states that a call leaves behind it.
void KeepStates(std::vector<Call>& states, const Call& call) {
  std::visit(
      [&]<class T>(const T&) {
        if constexpr (isState<T>) Set(states, call);
        if constexpr (std::is_same_v<T, UserPrimitive> || std::is_same_v<T, Text>)
          Set(states, StreamSource{0, nullptr, 0});
        if constexpr (std::is_same_v<T, Text>) Set(states, StageTexture{0, nullptr});
      },
      call);
}

}  // namespace

void Frame::Empty() {
  states.clear();
  calls.clear();
  vertices.clear();
  texts.clear();
}

void Frame::Skip() {
  for (const Call& call : calls) KeepStates(states, call);
  calls.clear();
  vertices.clear();
  texts.clear();
}

void Frame::Replace(Frame& skipped) {
  skipped.Skip();
  for (const Call& call : states) Set(skipped.states, call);
  states.swap(skipped.states);
  skipped.Empty();
}

void Frame::Make(Target& target) const {
  for (const Call& call : states) SetState(*target.device, call);
  for (const Call& call : calls) {
    std::visit(
        [&]<class T>(const T& c) {
          if constexpr (isState<T>)
            MakeState{*target.device}(c);
          else
            Draw{target, *this}(c);
        },
        call);
  }
}

void SetState(IDirect3DDevice8& device, const Call& call) {
  std::visit(
      [&]<class T>(const T& c) {
        if constexpr (isState<T>) MakeState{device}(c);
      },
      call);
}

}  // namespace quillorbit::presentation
