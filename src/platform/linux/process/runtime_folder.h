#pragma once

#include <filesystem>
#include <string_view>

namespace quillorbit::linux_adapter {

/// The folder of this user's sockets and locks: $XDG_RUNTIME_DIR; where that is not set,
/// /run/user/UID; where that is missing, /tmp/quillorbit-UID, which is created with mode 0700.
/// Throws std::system_error when the last one cannot be made, or belongs to another user.
[[nodiscard]] std::filesystem::path RuntimeFolder();

/// The device's name: the part of its path after \\.\, and the name of its driver's socket in the
/// runtime folder.
inline constexpr std::string_view sDeviceName = "vJoyQuillorbit";

}  // namespace quillorbit::linux_adapter
