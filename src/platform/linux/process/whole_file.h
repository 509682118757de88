#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quillorbit::linux_adapter {

/// A regular file's bytes; none when it cannot be read, is no regular file or is larger than
/// `nLimit` bytes. Never waits for another program, as reading a pipe would.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::filesystem::path& path,
                                                       std::size_t nLimit);

/// Writes a file that is new or replaces a regular file, which keeps its permission bits. When it
/// fails (std::system_error), or the machine stops meanwhile, the old file is as it was. Symbolic
/// links are followed, so that a link stays a link.
void ReplaceWholeFile(const std::filesystem::path& path, std::string_view sContent);

}  // namespace quillorbit::linux_adapter
