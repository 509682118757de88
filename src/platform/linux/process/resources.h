#pragma once

#include <compare>
#include <map>
#include <string>
#include <vector>

#include <QImage>

#include "platform/resources.h"

namespace quillorbit::linux_adapter {

/// The resources that are compiled into the program file: data under ":/TYPE/ID", icons under
/// ":/ICON/NAME.ico". Needs no display.
class LinuxResources final : public platform::Resources {
 public:
  [[nodiscard]] std::string LoadResData(std::uint16_t lId, std::string_view sType) const override;
  /// A program file here has no version resource.
  [[nodiscard]] std::string FileDescription() const override { return {}; }

  [[nodiscard]] int GetSystemMetrics(int nIndex) const override;
  /// Every image is shared, and the module is this program whatever the handle. Names are matched
  /// exactly.
  platform::IconHandle LoadImageA(platform::ModuleHandle hInst, const char* sName,
                                  std::uint32_t lType, int cx, int cy,
                                  std::uint32_t lFlags) override;

  /// The image of a handle; a null image for 0 and for an unknown handle.
  [[nodiscard]] QImage Image(platform::IconHandle hIcon) const;

 private:
  struct IconKey {
    std::string sName;
    int cx, cy;
    auto operator<=>(const IconKey&) const = default;
  };

  std::map<IconKey, platform::IconHandle> m_handles;
  std::vector<QImage> m_images;  ///< the image of handle 1, 2, ...
};

}  // namespace quillorbit::linux_adapter
