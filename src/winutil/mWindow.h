#pragma once

#include <cstdint>

#include "platform/form.h"

namespace quillorbit {

/// Told of each top-level window in turn.
class IEnumWindowsSink {
 public:
  virtual ~IEnumWindowsSink() = default;
  /// `bStop` is false on entry; true ends the walk after this window.
  virtual void EnumWindow(platform::WindowHandle hwnd, bool& bStop) = 0;
  [[nodiscard]] virtual std::int32_t Identifier() = 0;
};

/// Walks all top-level windows. It does nothing yet: the walk finds no window.
void EnumerateWindows(IEnumWindowsSink& sink);

}  // namespace quillorbit
