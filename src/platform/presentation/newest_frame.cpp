#include "platform/presentation/newest_frame.h"

#include <array>
#include <exception>
#include <utility>

namespace quillorbit::presentation {
namespace {

using platform::D3DERR_INVALIDCALL;
using platform::D3DError;
using platform::IDirect3DDevice8;

// All that the seam knows; a device may know fewer.
constexpr std::array renderStates = {
    platform::D3DRS_ZENABLE,          platform::D3DRS_SRCBLEND, platform::D3DRS_DESTBLEND,
    platform::D3DRS_CULLMODE,         platform::D3DRS_LIGHTING, platform::D3DRS_AMBIENT,
    platform::D3DRS_ALPHABLENDENABLE,
};
constexpr std::array stageStates = {platform::D3DTSS_COLOROP, platform::D3DTSS_ALPHAOP,
                                    platform::D3DTSS_MAGFILTER, platform::D3DTSS_MINFILTER,
                                    platform::D3DTSS_MIPFILTER};

std::size_t VertexCount(platform::D3DPRIMITIVETYPE eType, std::uint32_t nPrimitives) {
  return eType == platform::D3DPT_TRIANGLESTRIP ? std::size_t{nPrimitives} + 2
                                                : std::size_t{nPrimitives} * 3;
}

/// The value of a state that the device behind knows.
template <class Map>
auto& Known(Map& values, const typename std::remove_const_t<Map>::key_type& eState) {
  const auto found = values.find(eState);
  if (found == values.end()) throw D3DError(D3DERR_INVALIDCALL, "unknown state");
  return found->second;
}

}  // namespace

NewestFrameDevice::NewestFrameDevice(const std::shared_ptr<IDirect3DDevice8>& device,
                                     DrawingThreads& threads, std::function<bool()> seen)
    : m_thread(std::make_shared<DrawingThread>(device)),
      m_device(device),
      m_threads(threads),
      m_seen(std::move(seen)) {}

NewestFrameDevice::~NewestFrameDevice() { m_thread->End(); }

std::shared_ptr<IDirect3DDevice8> NewestFrameDevice::Behind() const {
  auto device = m_device.lock();
  if (!device) throw D3DError(platform::D3DERR_DEVICELOST, "the program ends");
  return device;
}

void NewestFrameDevice::ShowAgain() {
  if (m_bStarted) m_thread->ShowAgain(m_seen());
}

std::int32_t NewestFrameDevice::TestCooperativeLevel() { return m_thread->CooperativeLevel(); }

std::shared_ptr<platform::IDirect3DTexture8> NewestFrameDevice::CreateTexture(
    std::uint32_t Width, std::uint32_t Height, std::uint32_t Levels, std::uint32_t Usage,
    platform::D3DFORMAT Format, platform::D3DPOOL Pool) {
  return Behind()->CreateTexture(Width, Height, Levels, Usage, Format, Pool);
}

std::shared_ptr<platform::IDirect3DVertexBuffer8> NewestFrameDevice::CreateVertexBuffer(
    std::uint32_t Length, std::uint32_t Usage, std::uint32_t FVF, platform::D3DPOOL Pool) {
  return Behind()->CreateVertexBuffer(Length, Usage, FVF, Pool);
}

std::shared_ptr<platform::IDirect3DIndexBuffer8> NewestFrameDevice::CreateIndexBuffer(
    std::uint32_t Length, std::uint32_t Usage, platform::D3DFORMAT Format, platform::D3DPOOL Pool) {
  return Behind()->CreateIndexBuffer(Length, Usage, Format, Pool);
}

std::uint32_t NewestFrameDevice::GetRenderState(platform::D3DRENDERSTATETYPE State) const {
  return m_bRecording ? Known(m_renderStates, State) : Behind()->GetRenderState(State);
}

std::uint32_t NewestFrameDevice::GetTextureStageState(
    std::uint32_t Stage, platform::D3DTEXTURESTAGESTATETYPE Type) const {
  if (!m_bRecording) return Behind()->GetTextureStageState(Stage, Type);
  if (Stage != 0) throw D3DError(D3DERR_INVALIDCALL, "there is one texture stage");
  return Known(m_stage0, Type);
}

void NewestFrameDevice::SetRenderState(platform::D3DRENDERSTATETYPE State, std::uint32_t Value) {
  if (m_bRecording) Known(m_renderStates, State) = Value;
  Set(RenderState{State, Value});
}

void NewestFrameDevice::SetTextureStageState(std::uint32_t Stage,
                                             platform::D3DTEXTURESTAGESTATETYPE Type,
                                             std::uint32_t Value) {
  if (m_bRecording) {
    static_cast<void>(GetTextureStageState(Stage, Type));
    m_stage0[Type] = Value;
  }
  Set(StageState{Stage, Type, Value});
}

void NewestFrameDevice::SetTransform(platform::D3DTRANSFORMSTATETYPE State,
                                     const platform::D3DMATRIX& Matrix) {
  Set(Transform{State, Matrix});
}

void NewestFrameDevice::SetMaterial(const platform::D3DMATERIAL8& Material) { Set(Material); }

void NewestFrameDevice::SetLight(std::uint32_t Index, const platform::D3DLIGHT8& Light) {
  Set(LightRecord{Index, Light});
}

void NewestFrameDevice::LightEnable(std::uint32_t Index, bool Enable) {
  Set(LightSwitch{Index, Enable});
}

void NewestFrameDevice::SetTexture(std::uint32_t Stage,
                                   const std::shared_ptr<platform::IDirect3DTexture8>& Texture) {
  Set(StageTexture{Stage, Texture});
}

void NewestFrameDevice::SetVertexShader(std::uint32_t FVF) { Set(VertexShader{FVF}); }

void NewestFrameDevice::SetStreamSource(
    std::uint32_t StreamNumber, const std::shared_ptr<platform::IDirect3DVertexBuffer8>& StreamData,
    std::uint32_t Stride) {
  Set(StreamSource{StreamNumber, StreamData, Stride});
}

void NewestFrameDevice::SetIndices(
    const std::shared_ptr<platform::IDirect3DIndexBuffer8>& IndexData,
    std::uint32_t BaseVertexIndex) {
  Set(Indices{IndexData, BaseVertexIndex});
}

void NewestFrameDevice::Clear(std::uint32_t Count, const platform::RECT* /*pRects*/,
                              std::uint32_t Flags, platform::D3DCOLOR Color, float Z,
                              std::uint32_t Stencil) {
  if (Count != 0) throw D3DError(D3DERR_INVALIDCALL, "only the whole target can be cleared");
  if (!std::exchange(m_bRecording, true)) ReadStates();
  m_building.Skip();  // whatever was drawn before cannot be seen any more
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

void NewestFrameDevice::DrawText(const std::shared_ptr<const FontSource>& font,
                                 platform::D3DCOLOR Color, std::string_view sText,
                                 const platform::RECT& Rect, std::uint32_t Format) {
  m_building.calls.emplace_back(
      Text{font, Color, m_building.texts.size(), sText.size(), Rect, Format});
  m_building.texts += sText;
}

void NewestFrameDevice::Present(const platform::RECT* /*pSourceRect*/,
                                const platform::RECT* /*pDestRect*/,
                                platform::WindowHandle /*hDestWindowOverride*/,
                                const void* /*pDirtyRegion*/) {
  if (m_building.calls.empty() || !std::holds_alternative<ClearTarget>(m_building.calls.front()))
    throw D3DError(D3DERR_INVALIDCALL, "a frame begins with a Clear");
  if (!m_bStarted) m_threads.Start(m_thread);
  m_bStarted = true;
  m_thread->Draw(m_building, m_seen());
}

/// As they are when the device behind is handed over.
void NewestFrameDevice::ReadStates() {
  const auto device = Behind();
  const auto read = [](auto& values, auto eState, auto get) {
    try {
      values[eState] = get(eState);
    } catch (const std::exception&) {
      values.erase(eState);
    }
  };
  for (const auto eState : renderStates)
    read(m_renderStates, eState, [&](auto e) { return device->GetRenderState(e); });
  for (const auto eType : stageStates)
    read(m_stage0, eType, [&](auto e) { return device->GetTextureStageState(0, e); });
}

void NewestFrameDevice::Set(const Call& state) {
  if (m_bRecording)
    m_building.calls.push_back(state);
  else
    SetState(*Behind(), state);
}

}  // namespace quillorbit::presentation
