#include "platform/presentation/frame.h"

#include <type_traits>

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
  IDirect3DDevice8& device;
  const std::vector<std::byte>& vertices;

  void operator()(const ClearTarget& c) const {
    device.Clear(0, nullptr, c.Flags, c.Color, c.Z, c.Stencil);
  }
  void operator()(const SceneBegin&) const { device.BeginScene(); }
  void operator()(const SceneEnd&) const { device.EndScene(); }
  void operator()(const IndexedPrimitive& c) const {
    device.DrawIndexedPrimitive(c.Type, c.MinIndex, c.NumVertices, c.StartIndex, c.Count);
  }
  void operator()(const UserPrimitive& c) const {
    device.DrawPrimitiveUP(c.Type, c.Count, vertices.data() + c.nFirstByte, c.Stride);
  }
};

}  // namespace

void Frame::Empty() {
  calls.clear();
  vertices.clear();
}

void Frame::Make(IDirect3DDevice8& device) const {
  for (const Call& call : calls) {
    std::visit(
        [&](const auto& c) {
          if constexpr (std::is_invocable_v<MakeState, decltype(c)>)
            MakeState{device}(c);
          else
            Draw{device, vertices}(c);
        },
        call);
  }
}

void Frame::MakeStates(IDirect3DDevice8& device) const {
  for (const Call& call : calls) {
    std::visit(
        [&](const auto& c) {
          if constexpr (std::is_invocable_v<MakeState, decltype(c)>) MakeState{device}(c);
        },
        call);
  }
}

}  // namespace quillorbit::presentation
