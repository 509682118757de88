#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QThread>

#include "place.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr int nSeconds = 60;
constexpr int nSettleSeconds = 5;  // without a signal that is declared lost by then
constexpr int nRate = 100;         // datagrams a second

struct Case {
  const char* sName;
  const char* sYardstick;  ///< a program of the build folder; null is quillorbit itself
  bool bSignal;
  bool bWindow;
};
constexpr std::array cases = {
    Case{"empty Qt window, hidden", "bench_empty_widgets", false, true},
    Case{"quillorbit, hidden, no signal", nullptr, false, true},
    Case{"bare epoll loop, 100/s", "bench_bare_loop", true, false},
    Case{"quillorbit, hidden, 100/s", nullptr, true, true},
};

QByteArray ReadAll(const QString& sPath) {
  QFile file(sPath);
  if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("no " + sPath.toStdString());
  return file.readAll();
}

/// How often a thread has gone to sleep, which is once for each time that it was woken up.
double Sleeps(const QString& sTask) {
  constexpr const char* sField = "\nvoluntary_ctxt_switches:";
  const QByteArray sStatus = ReadAll(sTask + "/status");
  const auto at = sStatus.indexOf(sField);
  if (at < 0) throw std::runtime_error("no context switches in " + sTask.toStdString());
  return sStatus.mid(at).trimmed().split('\n')[0].split(':')[1].trimmed().toDouble();
}

/// What a process has used so far.
struct Usage {
  double dAllThreads = 0, dMainThread = 0, dCpuMilliseconds = 0;

  explicit Usage(const QProcess& process) : dCpuMilliseconds(CpuMilliseconds(process.processId())) {
    const QString sProcess = "/proc/" + QString::number(process.processId());
    const QDir tasks(sProcess + "/task");
    for (const QString& sTask : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
      dAllThreads += Sleeps(tasks.filePath(sTask));
    dMainThread = Sleeps(sProcess);
  }
};

/// A program that runs as its case wants it, with a driver and a phone of its own.
class Subject {
 public:
  explicit Subject(const Case& c) : m_case(c) {
    m_place.StartDriver(m_driver);
    for (QProcess* pProcess : {&m_program, &m_phone}) m_place.Prepare(*pProcess);
    m_phone.setProcessChannelMode(QProcess::SeparateChannels);
    if (c.sYardstick == nullptr)
      Start(m_program, m_place.Program(), {});
    else
      Start(m_program, Place::Built(c.sYardstick), {m_place.Port()});
    if (c.bWindow && !WithVisibleWindow({"--sync"}, {"windowminimize"}))
      throw std::runtime_error(std::string(c.sName) + ": xdotool could not minimise the window");
    if (c.bSignal)
      Start(m_phone, Place::Built("quillorbit-send"),
            {"--port", m_place.Port(), "--rate", QString::number(nRate)});
  }

  [[nodiscard]] Usage UsageNow() {
    const bool bAsWanted = m_program.state() == QProcess::Running &&
                           (m_phone.state() == QProcess::Running) == m_case.bSignal &&
                           !WithVisibleWindow({}, {});
    if (!bAsWanted) throw std::runtime_error(std::string(m_case.sName) + ": did not stay so");
    return Usage(m_program);
  }

  void End() {
    for (QProcess* pProcess : {&m_phone, &m_program, &m_driver})
      if (pProcess->state() == QProcess::Running) bench::End(*pProcess);
  }

 private:
  static void Start(QProcess& process, const QString& sProgram, const QStringList& arguments) {
    process.start(sProgram, arguments);
    if (!process.waitForStarted())
      throw std::runtime_error(sProgram.toStdString() + " does not start");
  }

  /// Whether the program shows a window; with a command for it, whether that was carried out.
  [[nodiscard]] bool WithVisibleWindow(const QStringList& options, const QStringList& command) {
    QProcess xdotool;
    const QString sProcess = QString::number(m_program.processId());
    xdotool.start("xdotool",
                  QStringList{"search"} + options +
                      QStringList{"--onlyvisible", "--all", "--pid", sProcess, "--class", "."} +
                      command);
    return xdotool.waitForFinished(10'000) && xdotool.exitCode() == 0;
  }

  const Case& m_case;
  Place m_place{Place::View::Model};
  QProcess m_driver, m_program, m_phone;
};

}  // namespace

void Idle() {
  // All of them in the same minute: what disturbs the machine meets each.
  std::vector<std::unique_ptr<Subject>> subjects;
  for (const Case& c : cases) subjects.push_back(std::make_unique<Subject>(c));
  QThread::sleep(nSettleSeconds);
  std::vector<Usage> before, after;
  for (const auto& subject : subjects) before.push_back(subject->UsageNow());
  QThread::sleep(nSeconds);
  for (const auto& subject : subjects) after.push_back(subject->UsageNow());
  for (const auto& subject : subjects) subject->End();

  std::printf("\nWake-ups and processor time with nothing to show, %d s side by side\n", nSeconds);
  std::printf("  %-30s %16s %14s %12s\n", "", "wake-ups/s: all", "main thread", "CPU ms/min");
  for (std::size_t i = 0; i < cases.size(); ++i)
    std::printf("  %-30s %16.2f %14.2f %12.0f\n", cases[i].sName,
                (after[i].dAllThreads - before[i].dAllThreads) / nSeconds,
                (after[i].dMainThread - before[i].dMainThread) / nSeconds,
                (after[i].dCpuMilliseconds - before[i].dCpuMilliseconds) * 60 / nSeconds);
  std::printf("  of which quillorbit's timers: at most 2/s without a signal, 1/s with one\n");
}

}  // namespace quillorbit::bench
