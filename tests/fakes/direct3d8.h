#pragma once

#include <cstring>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fakes/call_log.h"
#include "platform/direct3d8.h"

namespace quillorbit::fakes {

/// Floats as they are, to the last bit: "1 -0 0x1.fap-4".
class Exact {
 public:
  explicit Exact(std::initializer_list<float> values) {
    for (const float f : values) Add(f);
  }
  explicit Exact(const platform::D3DMATRIX& matrix) {
    for (const auto& row : matrix.m)
      for (const float f : row) Add(f);
  }
  explicit Exact(const platform::D3DCOLORVALUE& c) : Exact({c.r, c.g, c.b, c.a}) {}
  explicit Exact(const platform::D3DVECTOR& v) : Exact({v.x, v.y, v.z}) {}

  friend std::ostream& operator<<(std::ostream& out, const Exact& exact) {
    return out << exact.m_text;
  }

 private:
  void Add(float f) {
    std::ostringstream text;
    if (f == static_cast<float>(static_cast<int>(f)))
      text << f;  // also tells -0 from 0
    else
      text << std::hexfloat << f;
    m_text += (m_text.empty() ? "" : " ") + text.str();
  }

  std::string m_text;
};

class FakeTexture : public platform::IDirect3DTexture8 {
 public:
  FakeTexture(std::string name, std::uint32_t w, std::uint32_t h, std::uint32_t nLevels)
      : sName(std::move(name)), nWidth(w), nHeight(h) {
    for (std::uint32_t i = 0; nLevels == 0 || i < nLevels; ++i) {
      levels.emplace_back(std::size_t{4} * Width(i) * Height(i));
      if (Width(i) == 1 && Height(i) == 1) break;
    }
  }
  std::uint32_t GetLevelCount() const override { return static_cast<std::uint32_t>(levels.size()); }
  platform::D3DLOCKED_RECT LockRect(std::uint32_t Level) override {
    return {static_cast<std::int32_t>(4 * Width(Level)), levels.at(Level).data()};
  }
  void UnlockRect(std::uint32_t) override {}

  std::uint32_t Width(std::uint32_t iLevel) const { return std::max(1U, nWidth >> iLevel); }
  std::uint32_t Height(std::uint32_t iLevel) const { return std::max(1U, nHeight >> iLevel); }
  /// A pixel, A8R8G8B8.
  std::uint32_t Pixel(std::uint32_t iLevel, std::uint32_t x, std::uint32_t y) const {
    std::uint32_t value;
    std::memcpy(&value, levels.at(iLevel).data() + std::size_t{4} * (y * Width(iLevel) + x), 4);
    return value;
  }

  const std::string sName;
  const std::uint32_t nWidth, nHeight;
  std::vector<std::vector<std::byte>> levels;
};

/// A vertex or index buffer.
template <class Interface>
class FakeBuffer : public Interface {
 public:
  explicit FakeBuffer(std::uint32_t nLength) : bytes(nLength) {}
  std::byte* Lock() override { return bytes.data(); }
  void Unlock() override {}

  std::vector<std::byte> bytes;
};
using FakeVertexBuffer = FakeBuffer<platform::IDirect3DVertexBuffer8>;
using FakeIndexBuffer = FakeBuffer<platform::IDirect3DIndexBuffer8>;

/// Records what a device is asked to do, and remembers what is chosen for drawing.
class FakeDirect3DDevice : public platform::IDirect3DDevice8 {
 public:
  explicit FakeDirect3DDevice(CallLog& log) : m_log(log) {}

  std::int32_t TestCooperativeLevel() override {
    m_log.Call("TestCooperativeLevel");
    return lCooperativeLevel;
  }

  std::shared_ptr<platform::IDirect3DTexture8> CreateTexture(
      std::uint32_t Width, std::uint32_t Height, std::uint32_t Levels, std::uint32_t Usage,
      platform::D3DFORMAT Format, platform::D3DPOOL Pool) override {
    m_log.Call("CreateTexture ", Width, ", ", Height, ", ", Levels, ", ", Usage, ", ", Format, ", ",
               Pool);
    return std::make_shared<FakeTexture>("texture", Width, Height, Levels);
  }
  std::shared_ptr<platform::IDirect3DVertexBuffer8> CreateVertexBuffer(
      std::uint32_t Length, std::uint32_t Usage, std::uint32_t FVF,
      platform::D3DPOOL Pool) override {
    m_log.Call("CreateVertexBuffer ", Length, ", ", Usage, ", ", FVF, ", ", Pool);
    return std::make_shared<FakeVertexBuffer>(Length);
  }
  std::shared_ptr<platform::IDirect3DIndexBuffer8> CreateIndexBuffer(
      std::uint32_t Length, std::uint32_t Usage, platform::D3DFORMAT Format,
      platform::D3DPOOL Pool) override {
    m_log.Call("CreateIndexBuffer ", Length, ", ", Usage, ", ", Format, ", ", Pool);
    return std::make_shared<FakeIndexBuffer>(Length);
  }

  std::uint32_t GetRenderState(platform::D3DRENDERSTATETYPE State) const override {
    return renderStates.at(State);
  }
  void SetRenderState(platform::D3DRENDERSTATETYPE State, std::uint32_t Value) override {
    m_log.Call("SetRenderState ", State, ", ", Value);
    renderStates[State] = Value;
  }
  std::uint32_t GetTextureStageState(std::uint32_t Stage,
                                     platform::D3DTEXTURESTAGESTATETYPE Type) const override {
    return stageStates.at({Stage, Type});
  }
  void SetTextureStageState(std::uint32_t Stage, platform::D3DTEXTURESTAGESTATETYPE Type,
                            std::uint32_t Value) override {
    m_log.Call("SetTextureStageState ", Stage, ", ", Type, ", ", Value);
    stageStates[{Stage, Type}] = Value;
  }
  void SetTransform(platform::D3DTRANSFORMSTATETYPE State,
                    const platform::D3DMATRIX& Matrix) override {
    m_log.Call("SetTransform ", State, ", ", Exact(Matrix));
  }
  void SetMaterial(const platform::D3DMATERIAL8& m) override {
    m_log.Call("SetMaterial ", Exact(m.Diffuse), ", ", Exact(m.Ambient), ", ", Exact(m.Specular),
               ", ", Exact(m.Emissive), ", ", Exact({m.Power}));
  }
  void SetLight(std::uint32_t Index, const platform::D3DLIGHT8& l) override {
    m_log.Call("SetLight ", Index, ", ", l.Type, ", ", Exact(l.Diffuse), ", ", Exact(l.Specular),
               ", ", Exact(l.Ambient), ", ", Exact(l.Position), ", ", Exact(l.Direction), ", ",
               Exact({l.Range, l.Falloff, l.Attenuation0, l.Attenuation1, l.Attenuation2, l.Theta,
                      l.Phi}));
  }
  void LightEnable(std::uint32_t Index, bool Enable) override {
    m_log.Call("LightEnable ", Index, ", ", Enable);
  }
  void SetTexture(std::uint32_t Stage,
                  const std::shared_ptr<platform::IDirect3DTexture8>& Texture) override {
    const auto* pTexture = dynamic_cast<const FakeTexture*>(Texture.get());
    m_log.Call("SetTexture ", Stage, ", ", pTexture == nullptr ? "none" : pTexture->sName);
    texture = Texture;
  }
  void Clear(std::uint32_t Count, const platform::RECT* pRects, std::uint32_t Flags,
             platform::D3DCOLOR Color, float Z, std::uint32_t Stencil) override {
    m_log.Call("Clear ", Count, ", ", pRects, ", ", Flags, ", ", Color, ", ", Exact({Z}), ", ",
               Stencil);
  }
  void BeginScene() override { m_log.Call("BeginScene"); }
  void EndScene() override { m_log.Call("EndScene"); }
  void SetVertexShader(std::uint32_t FVF) override { m_log.Call("SetVertexShader ", FVF); }
  void SetStreamSource(std::uint32_t StreamNumber,
                       const std::shared_ptr<platform::IDirect3DVertexBuffer8>& StreamData,
                       std::uint32_t Stride) override {
    m_log.Call("SetStreamSource ", StreamNumber, StreamData ? ", buffer, " : ", none, ", Stride);
    vertices = StreamData;
  }
  void SetIndices(const std::shared_ptr<platform::IDirect3DIndexBuffer8>& IndexData,
                  std::uint32_t BaseVertexIndex) override {
    m_log.Call("SetIndices ", IndexData ? "buffer, " : "none, ", BaseVertexIndex);
    indices = IndexData;
  }
  void DrawIndexedPrimitive(platform::D3DPRIMITIVETYPE PrimitiveType, std::uint32_t MinIndex,
                            std::uint32_t NumVertices, std::uint32_t StartIndex,
                            std::uint32_t PrimitiveCount) override {
    m_log.Call("DrawIndexedPrimitive ", PrimitiveType, ", ", MinIndex, ", ", NumVertices, ", ",
               StartIndex, ", ", PrimitiveCount);
  }
  void DrawPrimitiveUP(platform::D3DPRIMITIVETYPE PrimitiveType, std::uint32_t PrimitiveCount,
                       const void* pVertices, std::uint32_t Stride) override {
    m_log.Call("DrawPrimitiveUP ", PrimitiveType, ", ", PrimitiveCount, ", ", Stride);
    const std::size_t nVertices =
        PrimitiveType == platform::D3DPT_TRIANGLESTRIP ? PrimitiveCount + 2 : 3 * PrimitiveCount;
    const auto* pBytes = static_cast<const std::byte*>(pVertices);
    userVertices.assign(pBytes, pBytes + nVertices * Stride);
  }
  void Present(const platform::RECT* pSource, const platform::RECT* pDest,
               platform::WindowHandle hWindow, const void* pDirtyRegion) override {
    m_log.Call("Present ", pSource, ", ", pDest, ", ", hWindow, ", ", pDirtyRegion);
  }

  std::int32_t lCooperativeLevel = platform::D3D_OK;
  std::map<platform::D3DRENDERSTATETYPE, std::uint32_t> renderStates{
      {platform::D3DRS_SRCBLEND, platform::D3DBLEND_ONE},
      {platform::D3DRS_DESTBLEND, platform::D3DBLEND_ZERO},
      {platform::D3DRS_CULLMODE, platform::D3DCULL_CCW},
      {platform::D3DRS_ALPHABLENDENABLE, 0},
      {platform::D3DRS_LIGHTING, 1}};
  std::map<std::pair<std::uint32_t, platform::D3DTEXTURESTAGESTATETYPE>, std::uint32_t> stageStates{
      {{0, platform::D3DTSS_COLOROP}, platform::D3DTOP_MODULATE},
      {{0, platform::D3DTSS_ALPHAOP}, platform::D3DTOP_SELECTARG1},
      {{0, platform::D3DTSS_MAGFILTER}, platform::D3DTEXF_POINT},
      {{0, platform::D3DTSS_MINFILTER}, platform::D3DTEXF_POINT},
      {{0, platform::D3DTSS_MIPFILTER}, platform::D3DTEXF_NONE}};
  std::shared_ptr<platform::IDirect3DTexture8> texture;
  std::shared_ptr<platform::IDirect3DVertexBuffer8> vertices;
  std::shared_ptr<platform::IDirect3DIndexBuffer8> indices;
  std::vector<std::byte> userVertices;

 private:
  CallLog& m_log;
};

class FakeDirect3D : public platform::IDirect3D8 {
 public:
  FakeDirect3D(CallLog& log, std::int32_t formatResult) : lFormatResult(formatResult), m_log(log) {}
  ~FakeDirect3D() override { m_log.Note("IDirect3D8 released"); }

  void GetAdapterDisplayMode(std::uint32_t Adapter, platform::D3DDISPLAYMODE& Mode) override {
    m_log.Call("GetAdapterDisplayMode ", Adapter);
    Mode = {1024, 768, 60, platform::D3DFMT_X8R8G8B8};
  }
  std::int32_t CheckDeviceFormat(std::uint32_t Adapter, platform::D3DDEVTYPE DeviceType,
                                 platform::D3DFORMAT AdapterFormat, std::uint32_t Usage,
                                 platform::D3DRESOURCETYPE RType,
                                 platform::D3DFORMAT CheckFormat) override {
    m_log.Call("CheckDeviceFormat ", Adapter, ", ", DeviceType, ", ", AdapterFormat, ", ", Usage,
               ", ", RType, ", ", CheckFormat);
    return lFormatResult;
  }
  std::shared_ptr<platform::IDirect3DDevice8> CreateDevice(
      std::uint32_t Adapter, platform::D3DDEVTYPE DeviceType, platform::WindowHandle hFocusWindow,
      std::uint32_t BehaviorFlags, platform::D3DPRESENT_PARAMETERS& p) override {
    m_log.Call("CreateDevice ", Adapter, ", ", DeviceType, ", ", hFocusWindow, ", ", BehaviorFlags,
               ", ", p.BackBufferWidth, " ", p.BackBufferHeight, " ", p.BackBufferFormat, " ",
               p.BackBufferCount, " ", p.MultiSampleType, " ", p.SwapEffect, " ", p.hDeviceWindow,
               " ", p.Windowed, " ", p.EnableAutoDepthStencil, " ", p.AutoDepthStencilFormat, " ",
               p.Flags, " ", p.FullScreen_RefreshRateInHz, " ", p.FullScreen_PresentationInterval);
    auto device = std::make_shared<FakeDirect3DDevice>(m_log);
    lastDevice = device;
    return device;
  }

  const std::int32_t lFormatResult;
  std::weak_ptr<FakeDirect3DDevice> lastDevice;

 private:
  CallLog& m_log;
};

}  // namespace quillorbit::fakes
