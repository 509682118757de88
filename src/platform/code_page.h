#pragma once

#include <string>
#include <string_view>

namespace quillorbit::platform {

/// Conversion between UTF-16 and the system's ANSI code page. What cannot be converted becomes the
/// target's replacement character.
class CodePage {
 public:
  virtual ~CodePage() = default;

  [[nodiscard]] virtual std::string WideCharToMultiByte(std::u16string_view sText) const = 0;
  [[nodiscard]] virtual std::u16string MultiByteToWideChar(std::string_view sText) const = 0;
};

}  // namespace quillorbit::platform
