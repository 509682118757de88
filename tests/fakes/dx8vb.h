#pragma once

#include "fakes/direct3d8.h"
#include "platform/d3dx8/matrix_functions.h"
#include "platform/dx8vb.h"

namespace quillorbit::fakes {

/// What D3DX finds in the model's file.
struct FakeModel : D3DXBuffer {
  struct Material {
    D3DMATERIAL8 material;
    std::string sTexture;
  };
  bool bHasMesh = true;
  std::vector<Material> materials;
};

struct FakeMesh : Fake<ID3DXMesh> {
  using Fake::Fake;
  ~FakeMesh() override { log.Note("mesh released"); }
  void DrawSubset(u32 i) override { log.Call("DrawSubset", i); }
  u32 GetNumFaces() const override { return 12; }
  u32 GetNumVertices() const override { return 24; }
};

struct FakeD3DX8 : Fake<D3DX8> {
  FakeD3DX8(CallLog& l, const FakeModel& m) : Fake(l), model(m) {}
  Ref<ID3DXFont> CreateFont(const Ref<IDirect3DDevice8>& device, FontHandle h) override {
    log.Call("CreateFont", device ? "device" : "none", h);
    return std::make_shared<ID3DXFont>();
  }
  void DrawText(const Ref<ID3DXFont>& font, D3DCOLOR c, View s, const RECT& r, u32 lF) override {
    log.Call("DrawText", font ? "font" : "none", c, s, r.left, r.top, r.right, r.bottom, lF);
  }
  Ref<ID3DXMesh> LoadMeshFromX(const std::string& sFile, u32 lOptions,
                               const Ref<IDirect3DDevice8>& device, Ref<D3DXBuffer>& materials,
                               i32& nMaterials) override {
    log.Call("LoadMeshFromX", sFile, lOptions, device ? "device" : "none");
    materials = std::make_shared<FakeModel>(model);
    nMaterials = static_cast<i32>(model.materials.size());
    return model.bHasMesh ? std::make_shared<FakeMesh>(log) : nullptr;
  }
  D3DMATERIAL8 BufferGetMaterial(const D3DXBuffer& materials, i32 i) override {
    return At(materials, i).material;
  }
  std::string BufferGetTextureName(const D3DXBuffer& materials, i32 i) override {
    return At(materials, i).sTexture;
  }
  Ref<IDirect3DTexture8> CreateTextureFromFileEx(const Ref<IDirect3DDevice8>& device,
                                                 const std::string& sFile, u32 w, u32 h,
                                                 u32 nLevels, u32 lUsage, D3DFORMAT eFormat,
                                                 D3DPOOL ePool, u32 lFilter, u32 lMipFilter,
                                                 D3DCOLOR colorKey) override {
    log.Call("CreateTextureFromFileEx", device ? "device" : "none", sFile, w, h, nLevels, lUsage,
             eFormat, ePool, lFilter, lMipFilter, colorKey);
    return std::make_shared<FakeTexture>(sFile, 1, 1, 1);
  }
  static const FakeModel::Material& At(const D3DXBuffer& buffer, i32 i) {
    return dynamic_cast<const FakeModel&>(buffer).materials.at(static_cast<std::size_t>(i));
  }
  const FakeModel& model;
};

struct FakeDirectX8 : Fake<DirectX8> {
  FakeDirectX8(CallLog& l, FakeAdapter& a) : Fake(l), adapter(a) {}
  ~FakeDirectX8() override { log.Note("DirectX8 released"); }
  Ref<IDirect3D8> Direct3DCreate() override {
    log.Call("Direct3DCreate");
    return std::make_shared<FakeDirect3D>(log, adapter);
  }
  FakeAdapter& adapter;
};

/// Direct3D that records its calls; the matrix functions are the real ones.
struct FakeDX8VB : Fake<d3dx8::MatrixFunctions> {
  using Fake::Fake;
  Ref<DirectX8> NewDirectX8() override {
    if (!bPresent) throw D3DError(D3DERR_NOTAVAILABLE, "no Direct3D");
    log.Call("NewDirectX8");
    return std::make_shared<FakeDirectX8>(log, adapter);
  }
  Ref<D3DX8> NewD3DX8() override {
    log.Call("NewD3DX8");
    return std::make_shared<FakeD3DX8>(log, model);
  }
  bool bPresent = false;
  FakeAdapter adapter;
  FakeModel model;
};

}  // namespace quillorbit::fakes
