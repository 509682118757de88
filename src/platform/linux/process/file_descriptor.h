#pragma once

#include <utility>

#include <unistd.h>

namespace quillorbit::linux_adapter {

/// Owns an open file description's number and closes it; -1 is none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : m_fd(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : m_fd(other.Release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    FileDescriptor(std::move(other)).Swap(*this);
    return *this;
  }
  ~FileDescriptor() {
    if (IsOpen()) close(m_fd);
  }

  [[nodiscard]] bool IsOpen() const { return m_fd >= 0; }
  [[nodiscard]] int Get() const { return m_fd; }
  [[nodiscard]] int Release() { return std::exchange(m_fd, -1); }
  void Swap(FileDescriptor& other) noexcept { std::swap(m_fd, other.m_fd); }

 private:
  int m_fd = -1;
};

}  // namespace quillorbit::linux_adapter
