#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace quillorbit {

/// Stores an integer least significant byte first at the beginning of `bytes`.
template <std::integral Int>
constexpr void StoreLittleEndian(std::span<std::byte> bytes, Int value) {
  for (std::size_t i = 0; i < sizeof(Int); ++i)
    bytes[i] = static_cast<std::byte>(static_cast<std::make_unsigned_t<Int>>(value) >> (8 * i));
}

/// Loads an integer, least significant byte first, from the beginning of `bytes`.
template <std::integral Int>
[[nodiscard]] constexpr Int LoadLittleEndian(std::span<const std::byte> bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = sizeof(Int); i-- > 0;)
    value = value << 8 | std::to_integer<std::uint64_t>(bytes[i]);
  return static_cast<Int>(value);
}

}  // namespace quillorbit
