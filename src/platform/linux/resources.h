#pragma once

#include "platform/resources.h"

namespace quillorbit::linux_adapter {

/// The resources that the build compiles into the program file, each named ":/TYPE/ID".
class LinuxResources final : public platform::Resources {
 public:
  [[nodiscard]] std::string LoadResData(std::uint16_t lId, std::string_view sType) const override;
};

}  // namespace quillorbit::linux_adapter
