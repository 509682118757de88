#pragma once

#include <string>
#include <vector>

#include "intake/MotionData.h"

namespace quillorbit::tools {

/// Reads a file of raw datagrams, 20 bytes each. Throws when it cannot be read, is empty, is longer
/// than 64 MiB or ends within a datagram.
[[nodiscard]] std::vector<MotionData> ReadRecordedFile(const std::string& sPath);

}  // namespace quillorbit::tools
