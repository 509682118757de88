#include "measure.h"

#include <cstdio>
#include <stdexcept>

#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QThread>

namespace quillorbit::bench {
namespace {

constexpr int nSettleSeconds = 1;
/// From the sender's start until it sends at its rate for certain.
constexpr int nLeadSeconds = nSettleSeconds + 1;

Place::View ViewOf(Scene eScene) {
  if (eScene == Scene::Overlay) return Place::View::Overlay;
  return eScene == Scene::BareLoop ? Place::View::Text : Place::View::Model;
}

}  // namespace

Subject::Subject(Scene eScene, const QString& sProgram)
    : m_place(ViewOf(eScene), sProgram), m_bBareLoop(eScene == Scene::BareLoop) {
  m_place.Prepare(m_program);
  m_program.setProcessChannelMode(QProcess::SeparateChannels);
  m_program.setStandardErrorFile(QProcess::nullDevice());  // tells of each driver that comes, goes
  if (m_bBareLoop) return;
  m_place.StartDriver(m_driver);
  m_program.start(m_place.Program(), QStringList());
  if (!m_program.waitForStarted()) throw std::runtime_error("the program does not start");
  m_frames.Watch(Xdotool(WithWindow({})).trimmed().toUInt());
  if (eScene == Scene::Hidden) Xdotool(WithWindow({"windowminimize", "%1"}));
  bench::End(m_driver);  // the sender takes its place
}

Subject::Result Subject::Measure(int nRate, int nSeconds) {
  QProcess sender;
  m_place.Prepare(sender);
  sender.setProcessChannelMode(QProcess::SeparateChannels);
  sender.start(
      Place::Built("quillorbit-send"),
      {"--measure", "--csv", "--settle", QString::number(nSettleSeconds), "--port", m_place.Port(),
       "--rate", QString::number(nRate), "--count", QString::number(nRate * nSeconds)});
  if (!sender.waitForStarted()) throw std::runtime_error("quillorbit-send does not start");
  if (m_bBareLoop) {
    while (!QFile::exists(m_place.Socket()) && !sender.waitForFinished(20)) continue;
    m_program.start(Place::Built("bench_bare_loop"), {m_place.Port()});
  }
  QThread::sleep(nLeadSeconds);

  m_frames.Restart();
  QElapsedTimer clock;
  clock.start();
  const double dProgram = CpuMilliseconds(m_program.processId());
  const double dServer = CpuMilliseconds(m_frames.ServerProcess());
  while (!sender.waitForFinished(10) && clock.elapsed() < 1000LL * (nSeconds - 1)) m_frames.Count();
  const double dElapsed = static_cast<double>(clock.elapsed()) / 1000;
  const Cost cost = {m_frames.Frames() / dElapsed,
                     (CpuMilliseconds(m_program.processId()) - dProgram) / dElapsed,
                     (CpuMilliseconds(m_frames.ServerProcess()) - dServer) / dElapsed};

  sender.waitForFinished();
  if (sender.exitCode() != 0)
    throw std::runtime_error("quillorbit-send: " + sender.readAllStandardError().toStdString() +
                             (m_program.waitForFinished(100) ? "the program has ended" : ""));
  if (m_bBareLoop) m_program.waitForFinished();  // it leaves with the driver
  const QStringList fields = QString(sender.readAllStandardOutput()).trimmed().split(',');
  Latency latency;
  constexpr qsizetype nFirst = 5;  // behind what was sent, arrived, lost, reordered, the minimum
  if (fields.size() != nFirst + static_cast<qsizetype>(latency.microseconds.size()))
    throw std::runtime_error("quillorbit-send printed no measurement");
  latency.dLost = fields[2].toDouble();
  latency.dOutOfOrder = fields[3].toDouble();
  for (std::size_t i = 0; i < latency.microseconds.size(); ++i)
    latency.microseconds[i] = fields[nFirst + static_cast<qsizetype>(i)].toDouble();
  return {latency, cost};
}

void Subject::End() {
  if (m_program.state() == QProcess::Running) bench::End(m_program);
}

QStringList Subject::Search(const QStringList& options) const {
  return QStringList{"search", "--onlyvisible", "--all", "--pid",
                     QString::number(m_program.processId())} +
         options;
}

QStringList Subject::WithWindow(const QStringList& commands) const {
  return Search({"--sync", "--name", "^Quillorbit"}) + commands;
}

QByteArray Subject::State() const {
  QFile profile(m_place.Profile());
  if (!profile.open(QIODevice::ReadOnly)) throw std::runtime_error("the profile is gone");
  return Xdotool(Search({"--class", ".", "getwindowgeometry", "%@"})) + profile.readAll();
}

QByteArray Xdotool(const QStringList& arguments) {
  QProcess xdotool;
  xdotool.start("xdotool", arguments);
  if (!xdotool.waitForFinished(20'000) || xdotool.exitCode() != 0)
    throw std::runtime_error("xdotool fails: " + arguments.join(' ').toStdString());
  return xdotool.readAllStandardOutput();
}

void PrintHead(const std::string& sTitle) {
  std::printf("\n%s\n  %-33s %5s %6s", sTitle.c_str(), "us, and the ratio to the loop", "lost",
              "order");
  for (const char* sName : Latency::sNames) std::printf(" %15s", sName);
  std::printf("\n");
}

void Print(const std::string& sName, const Latency& latency, const Latency& bare) {
  std::printf("  %-33s %5.0f %6.0f", sName.c_str(), latency.dLost, latency.dOutOfOrder);
  for (std::size_t i = 0; i < latency.microseconds.size(); ++i)
    std::printf(" %8.1f %6.2f", latency.microseconds[i],
                latency.microseconds[i] / bare.microseconds[i]);
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace quillorbit::bench
