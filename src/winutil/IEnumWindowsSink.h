#pragma once

#include <cstdint>

#include "platform/form.h"

namespace quillorbit {

/// Receives each top-level window in turn.
class IEnumWindowsSink {
 public:
  virtual ~IEnumWindowsSink() = default;
  /// `bStop` is false on entry; true ends the enumeration after this window.
  virtual void EnumWindow(platform::WindowHandle /*hwnd*/, bool& /*bStop*/) {}
  /// Read once for each enumeration and passed to the platform as its user value.
  [[nodiscard]] virtual std::int32_t Identifier() { return 0; }
};

}  // namespace quillorbit
