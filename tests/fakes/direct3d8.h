#pragma once

#include <array>
#include <bit>
#include <cstring>

#include "fakes/call_log.h"
#include "platform/direct3d8.h"

namespace quillorbit::fakes {

using Device = Ref<IDirect3DDevice8>;
using Texture = Ref<IDirect3DTexture8>;

/// A record's floats as they are, to the last bit: "1 -0 0x1.fap-4".
template <class Record>
std::string Exact(const Record& record) {
  std::ostringstream text;
  for (const float f : std::bit_cast<std::array<float, sizeof record / sizeof(float)>>(record)) {
    const bool bWhole = f == static_cast<float>(static_cast<int>(f));
    text << ' ' << (bWhole ? std::defaultfloat : std::hexfloat) << f;
  }
  return text.str().substr(1);
}

struct FakeTexture : IDirect3DTexture8 {
  FakeTexture(std::string name, u32 w, u32 h, u32 nLevels)
      : sName(std::move(name)), nWidth(w), nHeight(h), levels(nLevels) {
    if (nLevels == 0) levels.resize(std::size_t(std::bit_width(std::max(w, h))));
    for (u32 i = 0; i < levels.size(); ++i) levels[i].resize(std::size_t{4} * Width(i) * Height(i));
  }
  u32 GetLevelCount() const override { return static_cast<u32>(levels.size()); }
  D3DLOCKED_RECT LockRect(u32 iLevel) override {
    return {static_cast<i32>(4 * Width(iLevel)), levels.at(iLevel).data()};
  }
  void UnlockRect(u32) override {}

  u32 Width(u32 iLevel) const { return std::max(1U, nWidth >> iLevel); }
  u32 Height(u32 iLevel) const { return std::max(1U, nHeight >> iLevel); }

  const std::string sName;
  const u32 nWidth, nHeight;
  std::vector<std::vector<std::byte>> levels;
};

/// A vertex or index buffer.
template <class Interface>
struct FakeBuffer : Interface {
  explicit FakeBuffer(u32 nLength) : bytes(nLength) {}
  std::byte* Lock() override { return bytes.data(); }
  void Unlock() override {}
  std::vector<std::byte> bytes;
};
using FakeVertexBuffer = FakeBuffer<IDirect3DVertexBuffer8>;
using FakeIndexBuffer = FakeBuffer<IDirect3DIndexBuffer8>;

/// Records what a device is asked to do, and keeps what is chosen for drawing.
struct FakeDirect3DDevice : Fake<IDirect3DDevice8> {
  using Fake::Fake;
  i32 TestCooperativeLevel() override { return Answer(lCooperativeLevel, __func__); }
  Texture CreateTexture(u32 w, u32 h, u32 nLevels, u32 lUsage, D3DFORMAT f, D3DPOOL e) override {
    return Answer(std::make_shared<FakeTexture>("texture", w, h, nLevels), __func__, w, h, nLevels,
                  lUsage, f, e);
  }
  Ref<IDirect3DVertexBuffer8> CreateVertexBuffer(u32 n, u32 lUsage, u32 FVF, D3DPOOL e) override {
    return Answer(std::make_shared<FakeVertexBuffer>(n), __func__, n, lUsage, FVF, e);
  }
  Ref<IDirect3DIndexBuffer8> CreateIndexBuffer(u32 n, u32 lUsage, D3DFORMAT f, D3DPOOL e) override {
    return Answer(std::make_shared<FakeIndexBuffer>(n), __func__, n, lUsage, f, e);
  }
  u32 GetRenderState(D3DRENDERSTATETYPE e) const override { return renderStates.at(e); }
  void SetRenderState(D3DRENDERSTATETYPE e, u32 lValue) override {
    renderStates[e] = Answer(lValue, __func__, e, lValue);
  }
  u32 GetTextureStageState(u32 i, D3DTEXTURESTAGESTATETYPE e) const override {
    return stageStates.at({i, e});
  }
  void SetTextureStageState(u32 i, D3DTEXTURESTAGESTATETYPE e, u32 lValue) override {
    stageStates[{i, e}] = Answer(lValue, __func__, i, e, lValue);
  }
  void SetTransform(D3DTRANSFORMSTATETYPE e, const D3DMATRIX& m) override {
    Call(__func__, e, Exact(m));
  }
  void SetMaterial(const D3DMATERIAL8& m) override { Call(__func__, Exact(m)); }
  void SetLight(u32 i, const D3DLIGHT8& light) override {
    std::array<float, 25> floats;
    std::memcpy(floats.data(), &light.Diffuse, sizeof floats);
    Call(__func__, i, light.Type, Exact(floats));
  }
  void LightEnable(u32 i, bool bEnable) override { Call(__func__, i, bEnable); }
  void SetTexture(u32 i, const Texture& chosen) override {
    const auto* pTexture = dynamic_cast<const FakeTexture*>(chosen.get());
    texture = Answer(chosen, __func__, i, pTexture ? pTexture->sName : "none");
  }
  void Clear(u32 n, const RECT* p, u32 lFlags, D3DCOLOR c, float z, u32 lStencil) override {
    Call(__func__, n, p, lFlags, c, z, lStencil);
  }
  void BeginScene() override { Call(__func__); }
  void EndScene() override { Call(__func__); }
  void SetVertexShader(u32 FVF) override { Call(__func__, FVF); }
  void SetStreamSource(u32 i, const Ref<IDirect3DVertexBuffer8>& chosen, u32 nStride) override {
    vertices = Answer(chosen, __func__, i, chosen ? "buffer" : "none", nStride);
  }
  void SetIndices(const Ref<IDirect3DIndexBuffer8>& chosen, u32 iBase) override {
    indices = Answer(chosen, __func__, chosen ? "buffer" : "none", iBase);
  }
  void DrawIndexedPrimitive(D3DPRIMITIVETYPE e, u32 iMin, u32 nVertices, u32 iStart,
                            u32 nPrimitives) override {
    Call(__func__, e, iMin, nVertices, iStart, nPrimitives);
  }
  void DrawPrimitiveUP(D3DPRIMITIVETYPE e, u32 n, const void* p, u32 nStride) override {
    Call(__func__, e, n, nStride);
    const auto* const pBytes = static_cast<const std::byte*>(p);
    userVertices.assign(pBytes, pBytes + (e == D3DPT_TRIANGLESTRIP ? n + 2 : 3 * n) * nStride);
  }
  void Present(const RECT* pFrom, const RECT* pTo, WindowHandle h, const void* pDirty) override {
    Call(__func__, pFrom, pTo, h, pDirty);
  }

  i32 lCooperativeLevel = D3D_OK;
  std::map<D3DRENDERSTATETYPE, u32> renderStates{{D3DRS_SRCBLEND, D3DBLEND_ONE},
                                                 {D3DRS_DESTBLEND, D3DBLEND_ZERO},
                                                 {D3DRS_ALPHABLENDENABLE, 0}};
  std::map<std::pair<u32, D3DTEXTURESTAGESTATETYPE>, u32> stageStates{
      {{0, D3DTSS_COLOROP}, D3DTOP_MODULATE}, {{0, D3DTSS_ALPHAOP}, D3DTOP_SELECTARG1}};
  Texture texture;
  Ref<IDirect3DVertexBuffer8> vertices;
  Ref<IDirect3DIndexBuffer8> indices;
  std::vector<std::byte> userVertices;
};

struct FakeAdapter {
  std::weak_ptr<FakeDirect3DDevice> device;  ///< the last that was made
};

struct FakeDirect3D : Fake<IDirect3D8> {
  FakeDirect3D(CallLog& l, FakeAdapter& a) : Fake(l), adapter(a) {}
  ~FakeDirect3D() override { log.Note("IDirect3D8 released"); }
  void GetAdapterDisplayMode(u32 i, D3DDISPLAYMODE& mode) override {
    Call(__func__, i);
    mode = {1024, 768, 60, D3DFMT_X8R8G8B8};
  }
  i32 CheckDeviceFormat(u32 i, D3DDEVTYPE e, D3DFORMAT eAdapter, u32 lUsage, D3DRESOURCETYPE eType,
                        D3DFORMAT f) override {
    return Answer(D3D_OK, __func__, i, e, eAdapter, lUsage, eType, f);
  }
  Device CreateDevice(u32 i, D3DDEVTYPE e, WindowHandle h, u32 lBehavior,
                      D3DPRESENT_PARAMETERS& parameters) override {
    const auto fields = std::bit_cast<std::array<u32, 13>>(parameters);
    std::apply([&](auto... f) { Call("CreateDevice", i, e, h, lBehavior, f...); }, fields);
    auto device = std::make_shared<FakeDirect3DDevice>(log);
    adapter.device = device;
    return device;
  }
  FakeAdapter& adapter;
};

}  // namespace quillorbit::fakes
