#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/linux/process/file_descriptor.h"
#include "tools/stop_signal.h"

namespace quillorbit::tools {

/// A file, or the standard output, written at once and unbuffered, so that a reader sees everything
/// as it comes. Failures throw std::system_error.
class OutputFile {
 public:
  [[nodiscard]] static OutputFile StandardOutput();

  /// Creates or empties the file; "-" is the standard output.
  [[nodiscard]] static OutputFile Open(const std::string& sPath);

  void Write(std::span<const std::byte> bytes);
  void Write(std::string_view sText);

  /// Waits until the file can be written to; when a stop is requested first, nothing is written.
  template <typename Content>
  void Write(const Content& content, const StopSignal& stop) {
    if (WaitUntilWritable(stop)) Write(content);
  }

  [[nodiscard]] bool IsTerminal() const;

  /// The width of the terminal in columns.
  [[nodiscard]] std::size_t Columns() const;

 private:
  OutputFile(std::string sName, int fd) : m_sName(std::move(sName)), m_fd(fd) {}

  [[nodiscard]] bool WaitUntilWritable(const StopSignal& stop) const;

  std::string m_sName;
  linux_adapter::FileDescriptor m_fd;
};

}  // namespace quillorbit::tools
