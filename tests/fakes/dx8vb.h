#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fakes/direct3d8.h"
#include "platform/d3dx8/matrix_functions.h"
#include "platform/dx8vb.h"

namespace quillorbit::fakes {

/// What D3DX finds in the model's file.
struct FakeModel {
  struct Material {
    platform::D3DMATERIAL8 material;
    std::string sTexture;
  };
  bool bHasMesh = true;
  std::vector<Material> materials;
};

struct FakeMaterials : platform::D3DXBuffer {
  explicit FakeMaterials(std::vector<FakeModel::Material> all) : materials(std::move(all)) {}
  const std::vector<FakeModel::Material> materials;
};

class FakeMesh : public platform::ID3DXMesh {
 public:
  explicit FakeMesh(CallLog& log) : m_log(log) {}
  ~FakeMesh() override { m_log.Note("mesh released"); }
  void DrawSubset(std::uint32_t AttribId) override { m_log.Call("DrawSubset ", AttribId); }
  std::uint32_t GetNumFaces() const override { return 12; }
  std::uint32_t GetNumVertices() const override { return 24; }

 private:
  CallLog& m_log;
};

class FakeD3DXFont : public platform::ID3DXFont {};

class FakeD3DX8 : public platform::D3DX8 {
 public:
  FakeD3DX8(CallLog& log, const FakeModel& model) : m_log(log), m_model(model) {}

  std::shared_ptr<platform::ID3DXFont> CreateFont(
      const std::shared_ptr<platform::IDirect3DDevice8>& Device,
      platform::FontHandle hFont) override {
    m_log.Call("CreateFont ", Name(Device), ", ", hFont);
    return std::make_shared<FakeD3DXFont>();
  }
  void DrawText(const std::shared_ptr<platform::ID3DXFont>& Font, platform::D3DCOLOR Color,
                std::string_view sText, const platform::RECT& r, std::uint32_t Format) override {
    m_log.Call("DrawText ", Font ? "font, " : "no font, ", std::hex, Color, std::dec, ", ", sText,
               " | ", r.left, " ", r.top, " ", r.right, " ", r.bottom, " | ", Format);
  }
  std::shared_ptr<platform::ID3DXMesh> LoadMeshFromX(
      const std::string& sFile, std::uint32_t Options,
      const std::shared_ptr<platform::IDirect3DDevice8>& Device,
      std::shared_ptr<platform::D3DXBuffer>& Materials, std::int32_t& lMaterialCount) override {
    m_log.Call("LoadMeshFromX ", sFile, ", ", Options, ", ", Name(Device));
    Materials = std::make_shared<FakeMaterials>(m_model.materials);
    lMaterialCount = static_cast<std::int32_t>(m_model.materials.size());
    return m_model.bHasMesh ? std::make_shared<FakeMesh>(m_log) : nullptr;
  }
  platform::D3DMATERIAL8 BufferGetMaterial(const platform::D3DXBuffer& Materials,
                                           std::int32_t lIndex) override {
    return At(Materials, lIndex).material;
  }
  std::string BufferGetTextureName(const platform::D3DXBuffer& Materials,
                                   std::int32_t lIndex) override {
    return At(Materials, lIndex).sTexture;
  }
  std::shared_ptr<platform::IDirect3DTexture8> CreateTextureFromFileEx(
      const std::shared_ptr<platform::IDirect3DDevice8>& Device, const std::string& sFile,
      std::uint32_t Width, std::uint32_t Height, std::uint32_t MipLevels, std::uint32_t Usage,
      platform::D3DFORMAT Format, platform::D3DPOOL Pool, std::uint32_t Filter,
      std::uint32_t MipFilter, platform::D3DCOLOR ColorKey) override {
    m_log.Call("CreateTextureFromFileEx ", Name(Device), ", ", sFile, ", ", Width, ", ", Height,
               ", ", MipLevels, ", ", Usage, ", ", Format, ", ", Pool, ", ", Filter, ", ",
               MipFilter, ", ", ColorKey);
    return std::make_shared<FakeTexture>(sFile, 1, 1, 1);
  }

 private:
  static const char* Name(const std::shared_ptr<platform::IDirect3DDevice8>& device) {
    return device ? "device" : "no device";
  }
  static const FakeModel::Material& At(const platform::D3DXBuffer& buffer, std::int32_t lIndex) {
    return dynamic_cast<const FakeMaterials&>(buffer).materials.at(
        static_cast<std::size_t>(lIndex));
  }

  CallLog& m_log;
  const FakeModel& m_model;
};

class FakeDirectX8 : public platform::DirectX8 {
 public:
  FakeDirectX8(CallLog& log, std::int32_t lFormatResult, std::weak_ptr<FakeDirect3D>& created)
      : m_log(log), m_lFormatResult(lFormatResult), m_created(created) {}
  ~FakeDirectX8() override { m_log.Note("DirectX8 released"); }
  std::shared_ptr<platform::IDirect3D8> Direct3DCreate() override {
    m_log.Call("Direct3DCreate");
    auto d3d = std::make_shared<FakeDirect3D>(m_log, m_lFormatResult);
    m_created = d3d;
    return d3d;
  }

 private:
  CallLog& m_log;
  const std::int32_t m_lFormatResult;
  std::weak_ptr<FakeDirect3D>& m_created;
};

/// Direct3D that records; its matrix functions are the real ones. There is none until `bPresent`
/// says so.
class FakeDX8VB : public d3dx8::MatrixFunctions {
 public:
  explicit FakeDX8VB(CallLog& log) : m_log(log) {}

  std::shared_ptr<platform::DirectX8> NewDirectX8() override {
    if (!bPresent) throw platform::D3DError(platform::D3DERR_NOTAVAILABLE, "no Direct3D");
    m_log.Call("NewDirectX8");
    return std::make_shared<FakeDirectX8>(m_log, lFormatResult, m_d3d);
  }
  std::shared_ptr<platform::D3DX8> NewD3DX8() override {
    m_log.Call("NewD3DX8");
    return std::make_shared<FakeD3DX8>(m_log, model);
  }

  /// The device that was made last; throws when it is gone.
  std::shared_ptr<FakeDirect3DDevice> Device() const {
    return std::shared_ptr(std::shared_ptr(m_d3d)->lastDevice);
  }

  bool bPresent = false;
  std::int32_t lFormatResult = platform::D3D_OK;  ///< of CheckDeviceFormat
  FakeModel model;

 private:
  CallLog& m_log;
  std::weak_ptr<FakeDirect3D> m_d3d;
};

}  // namespace quillorbit::fakes
