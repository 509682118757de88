#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quillorbit::linux_adapter {

/// The control code that carries a joystick report, and the report's size.
inline constexpr std::uint32_t reportControlCode = 100;
inline constexpr std::size_t nReportBytes = 12;

/// An open joystick device, whichever kind it is; destroying it closes the device.
class Joystick {
 public:
  virtual ~Joystick() = default;

  /// Hands over one control code with its input; false when the device has not taken it or does not
  /// understand it. Does not wait for the receiver and does not throw.
  [[nodiscard]] virtual bool Control(std::uint32_t lControlCode,
                                     std::span<const std::byte> input) = 0;
};

}  // namespace quillorbit::linux_adapter
