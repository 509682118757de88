#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include <unistd.h>

#include <QCoreApplication>

#include "support/child_process.h"

namespace quillorbit::linux_tests {

using test::ReadFile;
using test::TemporaryFolder;
using test::WriteFile;

/// A temporary folder that is the runtime folder meanwhile.
class TemporaryRuntimeFolder : public TemporaryFolder {
 public:
  TemporaryRuntimeFolder() { setenv("XDG_RUNTIME_DIR", Path().c_str(), 1); }
  ~TemporaryRuntimeFolder() { unsetenv("XDG_RUNTIME_DIR"); }
};

/// Runs the event loop until the condition holds; false when it does not within two seconds.
template <class Condition>
[[nodiscard]] bool WaitUntil(Condition condition) {
  return test::Eventually(condition, std::chrono::seconds(2),
                          [] { QCoreApplication::processEvents(QEventLoop::AllEvents, 10); });
}

/// Gives every event that is there its turn.
inline void Settle() {
  for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
}

}  // namespace quillorbit::linux_tests
