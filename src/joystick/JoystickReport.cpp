#include "joystick/JoystickReport.h"

#include "base/Bytes.h"

namespace quillorbit {

JoystickReport JoystickReport::FromBytes(std::span<const std::byte, nBytes> bytes) {
  return {
      .x = LoadLittleEndian<std::int16_t>(bytes.subspan(0)),
      .y = LoadLittleEndian<std::int16_t>(bytes.subspan(2)),
      .z = LoadLittleEndian<std::int16_t>(bytes.subspan(4)),
      .zr = LoadLittleEndian<std::int16_t>(bytes.subspan(6)),
      .b = LoadLittleEndian<std::int32_t>(bytes.subspan(8)),
  };
}

std::array<std::byte, JoystickReport::nBytes> JoystickReport::ToBytes() const {
  std::array<std::byte, nBytes> bytes;
  const std::span<std::byte> all(bytes);
  StoreLittleEndian(all.subspan(0), x);
  StoreLittleEndian(all.subspan(2), y);
  StoreLittleEndian(all.subspan(4), z);
  StoreLittleEndian(all.subspan(6), zr);
  StoreLittleEndian(all.subspan(8), b);
  return bytes;
}

}  // namespace quillorbit
