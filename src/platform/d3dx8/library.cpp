#include "platform/d3dx8/library.h"

#include <exception>
#include <map>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/d3dx8/mesh.h"
#include "platform/d3dx8/text.h"
#include "platform/d3dx8/texture.h"

namespace quillorbit::d3dx8 {
namespace {

/// The helper object: each operation is implemented in a header of its own.
class Helper final : public platform::D3DX8 {
 public:
  Helper(platform::Fonts& fonts, Report report) : m_fonts(fonts), m_report(std::move(report)) {}

  std::shared_ptr<platform::ID3DXFont> CreateFont(
      const std::shared_ptr<platform::IDirect3DDevice8>& Device,
      platform::FontHandle hFont) override {
    return d3dx8::CreateFont(m_fonts, Device, hFont);
  }
  void DrawText(const std::shared_ptr<platform::ID3DXFont>& Font, platform::D3DCOLOR Color,
                std::string_view sText, const platform::RECT& Rect, std::uint32_t Format) override {
    d3dx8::DrawText(Font, Color, sText, Rect, Format);
  }
  std::shared_ptr<platform::ID3DXMesh> LoadMeshFromX(
      const std::string& sFile, std::uint32_t Options,
      const std::shared_ptr<platform::IDirect3DDevice8>& Device,
      std::shared_ptr<platform::D3DXBuffer>& Materials, std::int32_t& lMaterialCount) override {
    m_imageBudget = {};
    m_textures.clear();
    return Reported(
        [&] { return d3dx8::LoadMeshFromX(sFile, Options, Device, Materials, lMaterialCount); });
  }
  platform::D3DMATERIAL8 BufferGetMaterial(const platform::D3DXBuffer& Materials,
                                           std::int32_t lIndex) override {
    return d3dx8::BufferGetMaterial(Materials, lIndex);
  }
  std::string BufferGetTextureName(const platform::D3DXBuffer& Materials,
                                   std::int32_t lIndex) override {
    return d3dx8::BufferGetTextureName(Materials, lIndex);
  }
  std::shared_ptr<platform::IDirect3DTexture8> CreateTextureFromFileEx(
      const std::shared_ptr<platform::IDirect3DDevice8>& Device, const std::string& sFile,
      std::uint32_t Width, std::uint32_t Height, std::uint32_t MipLevels, std::uint32_t Usage,
      platform::D3DFORMAT Format, platform::D3DPOOL Pool, std::uint32_t Filter,
      std::uint32_t MipFilter, platform::D3DCOLOR ColorKey) override {
    std::weak_ptr<platform::IDirect3DTexture8>& known =
        m_textures[{Device.get(), sFile, Width, Height, MipLevels, Usage, Format, Pool, Filter,
                    MipFilter, ColorKey}];
    if (auto texture = known.lock()) return texture;
    auto texture = Reported([&] {
      return d3dx8::CreateTextureFromFileEx(Device, sFile, Width, Height, MipLevels, Usage, Format,
                                            Pool, Filter, MipFilter, ColorKey, m_imageBudget);
    });
    known = texture;
    return texture;
  }

 private:
  template <class Load>
  std::invoke_result_t<Load> Reported(Load load) {
    try {
      return load();
    } catch (const std::exception& failure) {
      m_report(failure.what());
      throw;
    }
  }

  /// What a texture is made from.
  using TextureKey =
      std::tuple<const void*, std::string, std::uint32_t, std::uint32_t, std::uint32_t,
                 std::uint32_t, platform::D3DFORMAT, platform::D3DPOOL, std::uint32_t,
                 std::uint32_t, platform::D3DCOLOR>;

  platform::Fonts& m_fonts;
  Report m_report;
  ImageBudget m_imageBudget;  ///< of the model that was loaded last
  /// The model's textures: a file that several materials name is read once.
  std::map<TextureKey, std::weak_ptr<platform::IDirect3DTexture8>> m_textures;
};

}  // namespace

std::shared_ptr<platform::D3DX8> Library::NewD3DX8() {
  return std::make_shared<Helper>(m_fonts, m_report);
}

}  // namespace quillorbit::d3dx8
