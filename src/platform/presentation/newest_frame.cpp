#include "platform/presentation/newest_frame.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace quillorbit::presentation {
namespace {

using namespace std::chrono_literals;
using platform::IDirect3DDevice8;

constexpr auto period = 16ms;  // of a display of 60 Hz
/// How much too early a frame may come and yet be drawn at once: a phone's 60 datagrams a second do
/// not arrive evenly. The next frame is due that much later.
constexpr auto tolerance = 8ms;

std::size_t VertexCount(platform::D3DPRIMITIVETYPE eType, std::uint32_t nPrimitives) {
  return eType == platform::D3DPT_TRIANGLESTRIP ? std::size_t{nPrimitives} + 2
                                                : std::size_t{nPrimitives} * 3;
}

}  // namespace

NewestFrameDevice::NewestFrameDevice(std::shared_ptr<IDirect3DDevice8> device, FrameDisplay display)
    : m_device(std::move(device)), m_display(std::move(display)) {
  m_display.timer->Tick = [this] { ShowKeptFrame(); };
}

std::int32_t NewestFrameDevice::TestCooperativeLevel() { return m_device->TestCooperativeLevel(); }

std::shared_ptr<platform::IDirect3DTexture8> NewestFrameDevice::CreateTexture(
    std::uint32_t Width, std::uint32_t Height, std::uint32_t Levels, std::uint32_t Usage,
    platform::D3DFORMAT Format, platform::D3DPOOL Pool) {
  return m_device->CreateTexture(Width, Height, Levels, Usage, Format, Pool);
}

std::shared_ptr<platform::IDirect3DVertexBuffer8> NewestFrameDevice::CreateVertexBuffer(
    std::uint32_t Length, std::uint32_t Usage, std::uint32_t FVF, platform::D3DPOOL Pool) {
  return m_device->CreateVertexBuffer(Length, Usage, FVF, Pool);
}

std::shared_ptr<platform::IDirect3DIndexBuffer8> NewestFrameDevice::CreateIndexBuffer(
    std::uint32_t Length, std::uint32_t Usage, platform::D3DFORMAT Format, platform::D3DPOOL Pool) {
  return m_device->CreateIndexBuffer(Length, Usage, Format, Pool);
}

/// The kept call that last set a state; null when none does.
template <class State, class Matches>
const State* NewestFrameDevice::LastSet(Matches matches) const {
  for (const Frame* pFrame : {&m_building, &m_kept}) {
    for (auto call = pFrame->calls.rbegin(); call != pFrame->calls.rend(); ++call) {
      const State* const pState = std::get_if<State>(&*call);
      if (pState != nullptr && matches(*pState)) return pState;
    }
  }
  return nullptr;
}

std::uint32_t NewestFrameDevice::GetRenderState(platform::D3DRENDERSTATETYPE State) const {
  const auto* pSet = LastSet<RenderState>([&](const RenderState& s) { return s.State == State; });
  return pSet == nullptr ? m_device->GetRenderState(State) : pSet->Value;
}

std::uint32_t NewestFrameDevice::GetTextureStageState(
    std::uint32_t Stage, platform::D3DTEXTURESTAGESTATETYPE Type) const {
  const auto* pSet =
      LastSet<StageState>([&](const StageState& s) { return s.Stage == Stage && s.Type == Type; });
  return pSet == nullptr ? m_device->GetTextureStageState(Stage, Type) : pSet->Value;
}

void NewestFrameDevice::SetRenderState(platform::D3DRENDERSTATETYPE State, std::uint32_t Value) {
  m_building.calls.emplace_back(RenderState{State, Value});
}

void NewestFrameDevice::SetTextureStageState(std::uint32_t Stage,
                                             platform::D3DTEXTURESTAGESTATETYPE Type,
                                             std::uint32_t Value) {
  m_building.calls.emplace_back(StageState{Stage, Type, Value});
}

void NewestFrameDevice::SetTransform(platform::D3DTRANSFORMSTATETYPE State,
                                     const platform::D3DMATRIX& Matrix) {
  m_building.calls.emplace_back(Transform{State, Matrix});
}

void NewestFrameDevice::SetMaterial(const platform::D3DMATERIAL8& Material) {
  m_building.calls.emplace_back(Material);
}

void NewestFrameDevice::SetLight(std::uint32_t Index, const platform::D3DLIGHT8& Light) {
  m_building.calls.emplace_back(LightRecord{Index, Light});
}

void NewestFrameDevice::LightEnable(std::uint32_t Index, bool Enable) {
  m_building.calls.emplace_back(LightSwitch{Index, Enable});
}

void NewestFrameDevice::SetTexture(std::uint32_t Stage,
                                   const std::shared_ptr<platform::IDirect3DTexture8>& Texture) {
  m_building.calls.emplace_back(StageTexture{Stage, Texture});
}

void NewestFrameDevice::SetVertexShader(std::uint32_t FVF) {
  m_building.calls.emplace_back(VertexShader{FVF});
}

void NewestFrameDevice::SetStreamSource(
    std::uint32_t StreamNumber, const std::shared_ptr<platform::IDirect3DVertexBuffer8>& StreamData,
    std::uint32_t Stride) {
  m_building.calls.emplace_back(StreamSource{StreamNumber, StreamData, Stride});
}

void NewestFrameDevice::SetIndices(
    const std::shared_ptr<platform::IDirect3DIndexBuffer8>& IndexData,
    std::uint32_t BaseVertexIndex) {
  m_building.calls.emplace_back(Indices{IndexData, BaseVertexIndex});
}

void NewestFrameDevice::Clear(std::uint32_t Count, const platform::RECT* /*pRects*/,
                              std::uint32_t Flags, platform::D3DCOLOR Color, float Z,
                              std::uint32_t Stencil) {
  if (Count != 0)
    throw platform::D3DError(platform::D3DERR_INVALIDCALL, "only the whole target can be cleared");
  // Whatever was drawn before cannot be seen any more.
  Forget(m_kept);
  Forget(m_building);
  m_building.calls.emplace_back(ClearTarget{Flags, Color, Z, Stencil});
}

void NewestFrameDevice::BeginScene() { m_building.calls.emplace_back(SceneBegin{}); }

void NewestFrameDevice::EndScene() { m_building.calls.emplace_back(SceneEnd{}); }

void NewestFrameDevice::DrawIndexedPrimitive(platform::D3DPRIMITIVETYPE PrimitiveType,
                                             std::uint32_t MinIndex, std::uint32_t NumVertices,
                                             std::uint32_t StartIndex,
                                             std::uint32_t PrimitiveCount) {
  m_building.calls.emplace_back(
      IndexedPrimitive{PrimitiveType, MinIndex, NumVertices, StartIndex, PrimitiveCount});
}

void NewestFrameDevice::DrawPrimitiveUP(platform::D3DPRIMITIVETYPE PrimitiveType,
                                        std::uint32_t PrimitiveCount,
                                        const void* pVertexStreamZeroData,
                                        std::uint32_t VertexStreamZeroStride) {
  const std::size_t nFirstByte = m_building.vertices.size();
  const auto* const pBytes = static_cast<const std::byte*>(pVertexStreamZeroData);
  m_building.vertices.insert(
      m_building.vertices.end(), pBytes,
      pBytes + VertexCount(PrimitiveType, PrimitiveCount) * VertexStreamZeroStride);
  m_building.calls.emplace_back(
      UserPrimitive{PrimitiveType, PrimitiveCount, nFirstByte, VertexStreamZeroStride});
}

void NewestFrameDevice::Present(const platform::RECT* /*pSourceRect*/,
                                const platform::RECT* /*pDestRect*/,
                                platform::WindowHandle /*hDestWindowOverride*/,
                                const void* /*pDirtyRegion*/) {
  if (!m_kept.calls.empty()) ShowNow();  // this frame goes on from where that one ended
  std::swap(m_building, m_kept);
  if (!m_display.visible()) return;
  if (IsDue())
    ShowNow();
  else
    Wait();
}

void NewestFrameDevice::ShowKeptFrame() noexcept {
  m_display.timer->Enabled(false);
  if (m_kept.calls.empty() || !m_display.visible()) return;
  try {
    ShowNow();
  } catch (const std::exception&) {
    // There is no caller left to report it to.
  }
}

bool NewestFrameDevice::IsDue() const { return m_display.now() >= m_due - tolerance; }

void NewestFrameDevice::Wait() {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_due - m_display.now());
  m_display.timer->Interval(std::max(1, static_cast<int>(left.count())));
  m_display.timer->Enabled(true);
}

void NewestFrameDevice::ShowNow() {
  m_display.timer->Enabled(false);
  m_due = std::max(m_due, m_display.now()) + period;
  try {
    m_kept.Make(*m_device);
    m_device->Present(nullptr, nullptr, 0, nullptr);
  } catch (...) {
    m_kept.Empty();
    throw;
  }
  m_kept.Empty();
}

/// Discards what a frame draws; its states are set all the same.
void NewestFrameDevice::Forget(Frame& frame) {
  frame.MakeStates(*m_device);
  frame.Empty();
}

}  // namespace quillorbit::presentation
