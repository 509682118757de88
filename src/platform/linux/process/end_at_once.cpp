#include "platform/linux/process/end_at_once.h"

#include <cstdio>

#include <unistd.h>

namespace quillorbit::linux_adapter {

void EndAtOnce(int nStatus) {
  std::fflush(nullptr);
  _exit(nStatus);
}

}  // namespace quillorbit::linux_adapter
