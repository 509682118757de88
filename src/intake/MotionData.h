#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quillorbit {

/// One motion datagram: the mobile device's complete state. Nothing is checked or scaled; a device
/// sends its axes in 0..150, with 75 for level.
struct MotionData {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t z = 0;
  std::int32_t zr = 0;
  std::int32_t b = 0;  ///< button mask: bit i set means that button i + 1 is pressed

  /// A datagram is the five fields in this order, each least significant byte first.
  static constexpr std::size_t nBytes = 20;

  [[nodiscard]] static MotionData FromBytes(std::span<const std::byte, nBytes> bytes);
  [[nodiscard]] std::array<std::byte, nBytes> ToBytes() const;

  bool operator==(const MotionData&) const = default;
};

/// The centre of every axis.
inline constexpr std::int32_t lAxisCentre = 75;

/// The angle in degrees at which an axis value is shown: 0 is -90, 75 is 0, 150 is +90.
[[nodiscard]] float DisplayAngle(std::int32_t lAxis);

}  // namespace quillorbit
