#include "tools/output_file.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tools/system_call.h"

namespace quillorbit::tools {

OutputFile OutputFile::StandardOutput() {
  constexpr const char* sName = "standard output";
  return {sName, Checked(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1), sName)};
}

OutputFile OutputFile::Open(const std::string& sPath) {
  if (sPath == "-") return StandardOutput();
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
  return {sPath, Checked(open(sPath.c_str(), flags, 0666), sPath)};
}

void OutputFile::Write(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t nWritten = write(m_fd.Get(), bytes.data(), bytes.size());
    if (nWritten < 0 && errno == EINTR) continue;
    if (nWritten < 0) throw SystemError(m_sName);
    bytes = bytes.subspan(static_cast<std::size_t>(nWritten));
  }
}

void OutputFile::Write(std::string_view sText) { Write(std::as_bytes(std::span(sText))); }

bool OutputFile::WaitUntilWritable(const StopSignal& stop) const {
  // A pipe that is ready takes a whole line or report: PIPE_BUF bytes.
  while (!stop.WaitFor(m_fd.Get(), POLLOUT))
    if (stop.Received()) return false;
  return true;
}

bool OutputFile::IsTerminal() const { return isatty(m_fd.Get()) == 1; }

std::size_t OutputFile::Columns() const {
  winsize size{};
  const bool bKnown = ioctl(m_fd.Get(), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return bKnown ? size.ws_col : 80;
}

}  // namespace quillorbit::tools
