#pragma once

#include <cstddef>
#include <cstdint>

namespace quillorbit::d3dx8 {

/// A number of an unsigned type, least significant byte first.
template <class Unsigned>
[[nodiscard]] Unsigned LittleEndian(const char* pBytes) {
  std::uint64_t value = 0;
  for (std::size_t i = sizeof(Unsigned); i-- > 0;)
    value = value << 8 | static_cast<unsigned char>(pBytes[i]);
  return static_cast<Unsigned>(value);
}

}  // namespace quillorbit::d3dx8
