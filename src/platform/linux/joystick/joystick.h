#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quillorbit::linux_adapter {

/// An open joystick device, whichever kind it is; destroying it closes the device.
class Joystick {
 public:
  virtual ~Joystick() = default;

  /// Hands over one control code with its input; false when it did not arrive or is not understood.
  /// Does not wait for the receiver and does not throw.
  [[nodiscard]] virtual bool Control(std::uint32_t lControlCode,
                                     std::span<const std::byte> input) = 0;
};

}  // namespace quillorbit::linux_adapter
