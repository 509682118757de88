#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>

namespace quillorbit::linux_tests {

/// A folder of its own that goes with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string sTemplate = std::filesystem::temp_directory_path() / "quillorbit-test-XXXXXX";
    if (mkdtemp(sTemplate.data()) == nullptr) throw std::runtime_error("mkdtemp");
    m_path = sTemplate;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }
  [[nodiscard]] std::filesystem::path operator/(std::string_view sName) const {
    return m_path / sName;
  }

 private:
  std::filesystem::path m_path;
};

/// A temporary folder that is the runtime folder meanwhile.
class TemporaryRuntimeFolder : public TemporaryFolder {
 public:
  TemporaryRuntimeFolder() { setenv("XDG_RUNTIME_DIR", Path().c_str(), 1); }
  ~TemporaryRuntimeFolder() { unsetenv("XDG_RUNTIME_DIR"); }
};

/// Acts as another user for its life. Needs root.
class AsNobody {
 public:
  AsNobody() {
    if (seteuid(65534) != 0) throw std::runtime_error("seteuid");
  }
  ~AsNobody() {
    if (seteuid(0) != 0) std::abort();
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;
};

inline void WriteFile(const std::filesystem::path& path, std::string_view sContent) {
  std::ofstream(path, std::ios::binary)
      .write(sContent.data(), static_cast<std::streamsize>(sContent.size()));
}

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Runs the event loop until the condition holds; false when it does not within two seconds.
template <class Condition>
[[nodiscard]] bool WaitUntil(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  }
  return true;
}

/// Gives every event that is there its turn.
inline void Settle() {
  for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
}

}  // namespace quillorbit::linux_tests
