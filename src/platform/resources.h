#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillorbit::platform {

/// The data that the program file carries.
class Resources {
 public:
  virtual ~Resources() = default;

  /// The bytes of a resource of the program's own type `sType`; throws std::runtime_error when
  /// there is none.
  [[nodiscard]] virtual std::string LoadResData(std::uint16_t lId,
                                                std::string_view sType) const = 0;
};

}  // namespace quillorbit::platform
