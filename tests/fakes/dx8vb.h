#pragma once

#include "fakes/direct3d8.h"
#include "platform/d3dx8/matrix_functions.h"
#include "platform/dx8vb.h"

namespace quillorbit::fakes {

/// What D3DX finds in the model's file.
struct FakeModel {
  struct Material {
    D3DMATERIAL8 material;
    std::string sTexture;
  };
  std::vector<Material> materials;
};

struct FakeMesh : Fake<ID3DXMesh> {
  using Fake::Fake;
  void DrawSubset(u32 i) override { Call(__func__, i); }
  u32 GetNumFaces() const override { return 12; }
  u32 GetNumVertices() const override { return 24; }
};

struct FakeD3DX8 : Fake<D3DX8> {
  FakeD3DX8(CallLog& l, const FakeModel& m) : Fake(l), model(m) {}
  Ref<ID3DXFont> CreateFont(const Device& device, FontHandle h) override {
    return Answer(std::make_shared<ID3DXFont>(), __func__, device ? "device" : "none", h);
  }
  void DrawText(const Ref<ID3DXFont>& font, D3DCOLOR c, View s, const RECT& r, u32 lF) override {
    Call(__func__, font ? "font" : "none", c, s, r.left, r.top, r.right, r.bottom, lF);
  }
  Ref<ID3DXMesh> LoadMeshFromX(const std::string& sFile, u32 lOptions, const Device& device,
                               Ref<D3DXBuffer>& materials, i32& nMaterials) override {
    Call(__func__, sFile, lOptions, device ? "device" : "none");
    materials = std::make_shared<D3DXBuffer>();
    nMaterials = static_cast<i32>(model.materials.size());
    return std::make_shared<FakeMesh>(log);
  }
  D3DMATERIAL8 BufferGetMaterial(const D3DXBuffer&, i32 i) override { return At(i).material; }
  std::string BufferGetTextureName(const D3DXBuffer&, i32 i) override { return At(i).sTexture; }
  Texture CreateTextureFromFileEx(const Device& device, const std::string& sFile, u32 w, u32 h,
                                  u32 nLevels, u32 lUsage, D3DFORMAT f, D3DPOOL e, u32 lFilter,
                                  u32 lMipFilter, D3DCOLOR key) override {
    return Answer(std::make_shared<FakeTexture>(sFile, 1, 1, 1), __func__,
                  device ? "device" : "none", sFile, w, h, nLevels, lUsage, f, e, lFilter,
                  lMipFilter, key);
  }
  const FakeModel::Material& At(i32 i) { return model.materials.at(std::size_t(i)); }
  const FakeModel& model;
};

struct FakeDirectX8 : Fake<DirectX8> {
  FakeDirectX8(CallLog& l, FakeAdapter& a) : Fake(l), adapter(a) {}
  ~FakeDirectX8() override { log.Note("DirectX8 released"); }
  Ref<IDirect3D8> Direct3DCreate() override {
    Call(__func__);
    return std::make_shared<FakeDirect3D>(log, adapter);
  }
  FakeAdapter& adapter;
};

/// Direct3D that records its calls; the matrix functions are the real ones.
struct FakeDX8VB : Fake<d3dx8::MatrixFunctions> {
  using Fake::Fake;
  Ref<DirectX8> NewDirectX8() override {
    if (!bPresent) throw D3DError(D3DERR_NOTAVAILABLE, "no Direct3D");
    Call(__func__);
    return std::make_shared<FakeDirectX8>(log, adapter);
  }
  Ref<D3DX8> NewD3DX8() override {
    return Answer(std::make_shared<FakeD3DX8>(log, model), __func__);
  }
  bool bPresent = false;
  FakeAdapter adapter;
  FakeModel model;
};

}  // namespace quillorbit::fakes
