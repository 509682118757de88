#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_adapter {

/// A regular file's bytes; none when there is no such file. Throws std::runtime_error, which names
/// the file, when it cannot be read, is not a regular file or is larger than `nLimit` bytes. Never
/// waits for another program, as reading a pipe would.
[[nodiscard]] std::string ReadWholeFile(const std::filesystem::path& path, std::size_t nLimit);

enum class OldFile {
  replaced,
  kept,  ///< renamed to NAME.refused, or NAME.refused-1, ... when that is there already
};

/// A file on its way to take the place of another one, whose permission bits and, where the system
/// allows it, owner and group it gets. Unless Replace() succeeds, or when the machine stops
/// meanwhile, the old file is as it was. Symbolic links are followed, so that a link stays a link;
/// other hard links to the old file keep its content.
class FileReplacement {
 public:
  /// Makes an empty file beside the one that the path means, which need not exist. Throws
  /// std::system_error when that cannot be done, and when the old file is not a regular one or is
  /// write-protected.
  explicit FileReplacement(const std::filesystem::path& path);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// Fills the new file, waits until the disk has it, and gives it the old one's name. Once; throws
  /// std::system_error when it fails.
  void Replace(std::string_view sContent, OldFile eOldFile);

 private:
  void Write(std::string_view sContent);

  std::filesystem::path m_target;
  bool m_bOld;                      ///< whether there was a file
  std::filesystem::path m_newFile;  ///< empty when there is nothing to remove
  FileDescriptor m_fd;
};

}  // namespace quillorbit::linux_adapter
