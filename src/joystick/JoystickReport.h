#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quillorbit {

/// One complete joystick state, as the driver takes it.
struct JoystickReport {
  std::int16_t x = 0;
  std::int16_t y = 0;
  std::int16_t z = 0;
  std::int16_t zr = 0;
  std::int32_t b = 0;  ///< button mask: bit i set means that button i + 1 is pressed

  /// The driver's input buffer is the five fields in this order, packed, each least significant
  /// byte first.
  static constexpr std::size_t nBytes = 12;

  [[nodiscard]] static JoystickReport FromBytes(std::span<const std::byte, nBytes> bytes);
  [[nodiscard]] std::array<std::byte, nBytes> ToBytes() const;

  bool operator==(const JoystickReport&) const = default;
};

/// The device control code that carries a report to the driver.
inline constexpr std::uint32_t lReportControlCode = 100;

}  // namespace quillorbit
