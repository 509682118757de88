#include <array>
#include <iostream>
#include <optional>
#include <string>

#include <poll.h>

#include "platform/linux/process/runtime_folder.h"
#include "tools/arguments.h"
#include "tools/driver_socket.h"
#include "tools/output_file.h"
#include "tools/report_text.h"
#include "tools/stop_signal.h"

namespace quillorbit::tools {
namespace {

constexpr const char* sHelp = R"(Usage: quillorbit-driver [OPTION]...
The user-space joystick driver: takes the reports that quillorbit would write to
a virtual joystick, where there is none, and shows them.

  --record FILE  write each report raw, 12 bytes, to FILE ("-": standard output)
  --print        print each report as a line: axes, button mask, pressed buttons
  --once         exit when the first program disconnects
  --help         show this help and exit

With neither --record nor --print a terminal shows the present state in one
line. The socket is vJoyQuillorbit in $XDG_RUNTIME_DIR (without it, in
/run/user/UID or /tmp/quillorbit-UID). It serves one program at a time, of the
same user or of root. SIGINT and SIGTERM end the driver cleanly; a summary goes
to the standard error. The exit code is 0, or 1 after a failure, or 2 for
bad usage.
)";

struct DriverOptions {
  std::optional<std::string> sRecord;
  bool bPrint = false;
  bool bOnce = false;
  bool bHelp = false;
};

DriverOptions ParseOptions(int argc, char** argv) {
  constexpr std::array table{
      option{"record", required_argument, nullptr, 0}, option{"print", no_argument, nullptr, 0},
      option{"once", no_argument, nullptr, 0}, option{"help", no_argument, nullptr, 0}};
  DriverOptions options;
  ForEachOption(argc, argv, table, [&](const std::string& sName, const std::string& sValue) {
    if (sName == "--record") options.sRecord = sValue;
    if (sName == "--print") options.bPrint = true;
    if (sName == "--once") options.bOnce = true;
    if (sName == "--help") options.bHelp = true;
  });
  if (options.bPrint && options.sRecord == "-")
    throw UsageError("--record -: the standard output is taken by --print");
  return options;
}

/// One line of the terminal, redrawn at a rate that the eye can follow.
class LiveView {
 public:
  explicit LiveView(OutputFile& terminal) : m_terminal(terminal) {}

  void Show(const JoystickReport& report) { m_pending = report; }

  /// When the line has to be redrawn; never when it is up to date.
  [[nodiscard]] Clock::time_point Due() const {
    return m_pending ? m_nextDraw : Clock::time_point::max();
  }

  void Redraw(const StopSignal& stop) {
    const Clock::time_point now = Clock::now();
    if (!m_pending || now < m_nextDraw) return;
    // The last column stays free: some terminals go to the next line as soon as it is written.
    const std::string sLine = LiveLine(*m_pending, m_terminal.Columns() - 1);
    m_terminal.Write("\r" + sLine + "\x1b[K", stop);
    m_pending.reset();
    m_nextDraw = now + std::chrono::milliseconds(34);
    m_bDrawn = true;
  }

  void LeaveLine() {
    if (m_bDrawn) m_terminal.Write("\n");
  }

 private:
  OutputFile& m_terminal;
  std::optional<JoystickReport> m_pending;
  Clock::time_point m_nextDraw = Clock::time_point::min();
  bool m_bDrawn = false;
};

class Driver {
 public:
  explicit Driver(const DriverOptions& options)
      : m_options(options), m_socket(linux_adapter::RuntimeFolder()) {
    // Only the holder of the lock may empty the file.
    if (options.sRecord) m_record = OutputFile::Open(*options.sRecord);
    if (options.bPrint || !options.sRecord) m_output = OutputFile::StandardOutput();
    if (!options.bPrint && m_output && m_output->IsTerminal()) m_view.emplace(*m_output);
  }

  void Run() {
    const StopSignal stop;
    m_socket.Listen();
    std::cerr << "quillorbit-driver: listening at " << m_socket.Path().string() << '\n';
    Clock::time_point due = Clock::time_point::max();
    while (!stop.Received() && !m_bDone) {
      if (stop.WaitFor(m_socket.Fd(), POLLIN, due)) Handle(m_socket.Next(), stop);
      if (!m_view) continue;
      m_view->Redraw(stop);
      due = m_view->Due();
    }
    HandleWhatHasArrived(stop);
    if (m_view) m_view->LeaveLine();
  }

  /// Prints what was counted, also after a failure.
  void Summarize() const {
    std::cerr << "quillorbit-driver: reports " << m_nReports << ", rejected packets " << m_nRejected
              << ", clients " << m_nClients << '\n';
  }

 private:
  void Handle(const DriverEvent& event, const StopSignal& stop) {
    switch (event.kind) {
      case DriverEvent::Kind::nothing:
        break;
      case DriverEvent::Kind::clientConnected:
        ++m_nClients;
        break;
      case DriverEvent::Kind::clientRefused:
        std::cerr << "quillorbit-driver: refused a program of another user\n";
        break;
      case DriverEvent::Kind::report:
        HandleReport(event.report, stop);
        break;
      case DriverEvent::Kind::rejectedPacket:
        ++m_nRejected;
        break;
      case DriverEvent::Kind::clientDisconnected:
        m_bDone = m_options.bOnce;
        break;
    }
  }

  void HandleReport(const JoystickReport& report, const StopSignal& stop) {
    ++m_nReports;
    if (m_record) m_record->Write(std::span<const std::byte>(report.ToBytes()), stop);
    if (m_options.bPrint) m_output->Write(PrintedLine(report), stop);
    if (m_view) m_view->Show(report);
  }

  /// Takes what was sent before the stop; the limit is for a client that never pauses.
  void HandleWhatHasArrived(const StopSignal& stop) {
    for (int n = 0; n < 1000 && !m_bDone; ++n) {
      const DriverEvent event = m_socket.Next();
      if (event.kind == DriverEvent::Kind::nothing) return;
      Handle(event, stop);
    }
  }

  const DriverOptions& m_options;
  DriverSocket m_socket;
  std::optional<OutputFile> m_record;
  std::optional<OutputFile> m_output;
  std::optional<LiveView> m_view;
  std::int64_t m_nReports = 0;
  std::int64_t m_nRejected = 0;
  std::int64_t m_nClients = 0;
  bool m_bDone = false;
};

void RunDriver(int argc, char** argv) {
  const DriverOptions options = ParseOptions(argc, argv);
  if (options.bHelp) return OutputFile::StandardOutput().Write(sHelp);
  Driver driver(options);
  try {
    driver.Run();
  } catch (...) {
    driver.Summarize();
    throw;
  }
  driver.Summarize();
}

}  // namespace
}  // namespace quillorbit::tools

int main(int argc, char** argv) {
  using namespace quillorbit::tools;
  return RunTool("quillorbit-driver", [&] { RunDriver(argc, argv); });
}
