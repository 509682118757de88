#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace quillorbit::linux_adapter {

/// A regular file's bytes; none when there is no such file. Throws std::runtime_error, which names
/// the file, when it cannot be read, is not a regular file or is larger than `nLimit` bytes. Never
/// waits for another program, as reading a pipe would.
[[nodiscard]] std::string ReadWholeFile(const std::filesystem::path& path, std::size_t nLimit);

enum class OldFile {
  replaced,
  kept,  ///< renamed to NAME.refused, or NAME.refused-1, ... when that is there already
};

/// Writes a file that is new or takes the place of a regular file, whose permission bits and, where
/// the system allows it, owner and group it gets. When it fails (std::system_error), or the machine
/// stops meanwhile, the old file is as it was. Symbolic links are followed, so that a link stays a
/// link; other hard links to the old file keep its content.
void ReplaceWholeFile(const std::filesystem::path& path, std::string_view sContent,
                      OldFile eOldFile = OldFile::replaced);

}  // namespace quillorbit::linux_adapter
