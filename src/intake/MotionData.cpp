#include "intake/MotionData.h"

#include "base/Bytes.h"

namespace quillorbit {

MotionData MotionData::FromBytes(std::span<const std::byte, nBytes> bytes) {
  return {
      .x = LoadLittleEndian<std::int32_t>(bytes.subspan(0)),
      .y = LoadLittleEndian<std::int32_t>(bytes.subspan(4)),
      .z = LoadLittleEndian<std::int32_t>(bytes.subspan(8)),
      .zr = LoadLittleEndian<std::int32_t>(bytes.subspan(12)),
      .b = LoadLittleEndian<std::int32_t>(bytes.subspan(16)),
  };
}

std::array<std::byte, MotionData::nBytes> MotionData::ToBytes() const {
  std::array<std::byte, nBytes> bytes;
  std::span<std::byte> rest(bytes);
  for (const std::int32_t field : {x, y, z, zr, b}) {
    StoreLittleEndian(rest, field);
    rest = rest.subspan(sizeof field);
  }
  return bytes;
}

float DisplayAngle(std::int32_t lAxis) {
  // The factor is a 32-bit float, the arithmetic 64-bit: 1.2000000476837158, not 1.2.
  return static_cast<float>(lAxis * static_cast<double>(1.2F) - 90.0);
}

}  // namespace quillorbit
