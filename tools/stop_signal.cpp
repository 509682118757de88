#include "tools/stop_signal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <sys/signalfd.h>

#include "tools/system_call.h"

namespace quillorbit::tools {
namespace {

timespec TimeUntil(Clock::time_point deadline) {
  using namespace std::chrono;
  const auto left = std::max(deadline - Clock::now(), Clock::duration::zero());
  const auto wholeSeconds = duration_cast<seconds>(left);
  return {.tv_sec = wholeSeconds.count(), .tv_nsec = nanoseconds(left - wholeSeconds).count()};
}

}  // namespace

StopSignal::StopSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  Checked(sigprocmask(SIG_BLOCK, &signals, nullptr), "sigprocmask");
  m_signals =
      linux_adapter::FileDescriptor(Checked(signalfd(-1, &signals, SFD_CLOEXEC), "signalfd"));
}

bool StopSignal::Received() const { return WaitFor(m_signals.Get(), POLLIN, Clock::now()); }

void StopSignal::Forget() {
  signalfd_siginfo signal;
  if (Received()) Checked(read(m_signals.Get(), &signal, sizeof signal), "signalfd");
}

bool StopSignal::WaitFor(int fd, short events, Clock::time_point deadline) const {
  std::array<pollfd, 2> waited{pollfd{.fd = fd, .events = events, .revents = 0},
                               pollfd{.fd = m_signals.Get(), .events = POLLIN, .revents = 0}};
  const bool bForEver = deadline == Clock::time_point::max();
  const timespec left = bForEver ? timespec{} : TimeUntil(deadline);
  if (ppoll(waited.data(), waited.size(), bForEver ? nullptr : &left, nullptr) < 0) {
    if (errno == EINTR) return false;  // stopped and continued; every caller asks again
    throw SystemError("ppoll");
  }
  return waited[0].revents != 0;
}

}  // namespace quillorbit::tools
