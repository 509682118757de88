#pragma once

#include <cstdint>

#include "base/ShortText.h"

namespace quillorbit {

/// Count and rate of the accepted datagrams, "1234 (25/s)".
[[nodiscard]] inline ShortText PacketText(std::int32_t lCount, std::int32_t lRate) {
  return ShortText() << lCount << " (" << lRate << "/s)";
}

/// An axis as it came and as it is after its filter, "100 (98)".
[[nodiscard]] inline ShortText FilteredAxisText(std::int32_t lRaw, std::int16_t iFiltered) {
  return ShortText() << lRaw << " (" << std::int32_t{iFiltered} << ")";
}

}  // namespace quillorbit
