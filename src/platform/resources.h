#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/form.h"
#include "platform/process.h"

namespace quillorbit::platform {

// The sizes of icons, in pixels
inline constexpr int SM_CXICON = 11;
inline constexpr int SM_CYICON = 12;
inline constexpr int SM_CXSMICON = 49;
inline constexpr int SM_CYSMICON = 50;

inline constexpr std::uint32_t IMAGE_ICON = 1;
inline constexpr std::uint32_t LR_SHARED = 0x8000;

/// The resources inside the program file.
class Resources {
 public:
  virtual ~Resources() = default;

  /// The bytes of a resource of the program's own type `sType`; throws std::runtime_error when
  /// there is none.
  [[nodiscard]] virtual std::string LoadResData(std::uint16_t lId,
                                                std::string_view sType) const = 0;

  /// The file description of the version resource, UTF-8; empty when there is none.
  [[nodiscard]] virtual std::string FileDescription() const = 0;

  [[nodiscard]] virtual int GetSystemMetrics(int nIndex) const = 0;
  /// Loads an image of a module at a size in pixels, scaled if the resource has none of that size;
  /// 0 when there is no such resource. An image loaded with LR_SHARED is never destroyed; loading
  /// it again may return the same handle, on some platforms whatever the size.
  virtual IconHandle LoadImageA(ModuleHandle hInst, const char* sName, std::uint32_t lType, int cx,
                                int cy, std::uint32_t lFlags) = 0;
};

}  // namespace quillorbit::platform
