#pragma once

#include "platform/code_page.h"

namespace quillorbit::linux_adapter {

/// The desktop's code page is UTF-8. U+FFFD is its replacement character in both directions.
class LinuxCodePage final : public platform::CodePage {
 public:
  [[nodiscard]] std::string WideCharToMultiByte(std::u16string_view sText) const override;
  [[nodiscard]] std::u16string MultiByteToWideChar(std::string_view sText) const override;
};

}  // namespace quillorbit::linux_adapter
