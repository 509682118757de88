#pragma once

#include <filesystem>

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_adapter {

/// Takes the exclusive lock of a file, which is created when it is missing and never removed: a
/// removed lock file could be locked by two. The lock lasts as long as the descriptor is open in
/// this process and ends with it, however it ends; programs that this one starts do not inherit it.
///
/// Returns a descriptor that is not open when another one holds the lock. Throws std::system_error
/// when there can be no such file.
[[nodiscard]] FileDescriptor TryLock(const std::filesystem::path& path);

}  // namespace quillorbit::linux_adapter
