#include "platform/presentation/text.h"

#include <string>
#include <utility>

#include "platform/presentation/newest_frame.h"

namespace quillorbit::presentation {
namespace {

struct FrameFont final : platform::ID3DXFont {
  FrameFont(std::shared_ptr<NewestFrameDevice> d, FontSource s)
      : device(std::move(d)), source(std::make_shared<FontSource>(std::move(s))) {}
  const std::shared_ptr<NewestFrameDevice> device;
  const std::shared_ptr<const FontSource> source;
};

class Library final : public platform::D3DX8 {
 public:
  explicit Library(std::shared_ptr<D3DX8> library) : m_library(std::move(library)) {}

  std::shared_ptr<platform::ID3DXFont> CreateFont(
      const std::shared_ptr<platform::IDirect3DDevice8>& Device,
      platform::FontHandle hFont) override {
    auto device = std::dynamic_pointer_cast<NewestFrameDevice>(Device);
    if (!device) throw platform::D3DError(platform::D3DERR_INVALIDCALL, "another's device");
    return std::make_shared<FrameFont>(std::move(device), FontSource{m_library, hFont});
  }
  void DrawText(const std::shared_ptr<platform::ID3DXFont>& Font, platform::D3DCOLOR Color,
                std::string_view sText, const platform::RECT& Rect, std::uint32_t Format) override {
    const auto* pFont = dynamic_cast<const FrameFont*>(Font.get());
    if (pFont == nullptr)
      throw platform::D3DError(platform::D3DERR_INVALIDCALL, "no font to draw a text with");
    pFont->device->DrawText(pFont->source, Color, sText, Rect, Format);
  }
  std::shared_ptr<platform::ID3DXMesh> LoadMeshFromX(
      const std::string& sFile, std::uint32_t Options,
      const std::shared_ptr<platform::IDirect3DDevice8>& Device,
      std::shared_ptr<platform::D3DXBuffer>& Materials, std::int32_t& lMaterialCount) override {
    return m_library->LoadMeshFromX(sFile, Options, Device, Materials, lMaterialCount);
  }
  platform::D3DMATERIAL8 BufferGetMaterial(const platform::D3DXBuffer& Materials,
                                           std::int32_t lIndex) override {
    return m_library->BufferGetMaterial(Materials, lIndex);
  }
  std::string BufferGetTextureName(const platform::D3DXBuffer& Materials,
                                   std::int32_t lIndex) override {
    return m_library->BufferGetTextureName(Materials, lIndex);
  }
  std::shared_ptr<platform::IDirect3DTexture8> CreateTextureFromFileEx(
      const std::shared_ptr<platform::IDirect3DDevice8>& Device, const std::string& sFile,
      std::uint32_t Width, std::uint32_t Height, std::uint32_t MipLevels, std::uint32_t Usage,
      platform::D3DFORMAT Format, platform::D3DPOOL Pool, std::uint32_t Filter,
      std::uint32_t MipFilter, platform::D3DCOLOR ColorKey) override {
    return m_library->CreateTextureFromFileEx(Device, sFile, Width, Height, MipLevels, Usage,
                                              Format, Pool, Filter, MipFilter, ColorKey);
  }

 private:
  std::shared_ptr<D3DX8> m_library;
};

}  // namespace

std::shared_ptr<platform::D3DX8> DrawTextsLater(std::shared_ptr<platform::D3DX8> library) {
  return std::make_shared<Library>(std::move(library));
}

}  // namespace quillorbit::presentation
