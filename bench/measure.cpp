#include "measure.h"

#include <stdexcept>

#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QThread>

#include "frame_counter.h"
#include "place.h"

namespace quillorbit::bench {
namespace {

constexpr int nSettleSeconds = 2;

/// What xdotool does with the program's window. There has to be a window manager.
QByteArray WithWindow(const QStringList& command) {
  QProcess xdotool;
  xdotool.start(
      "xdotool",
      QStringList{"search", "--sync", "--onlyvisible", "--name", "^Quillorbit"} + command);
  if (!xdotool.waitForFinished(10'000) || xdotool.exitCode() != 0)
    throw std::runtime_error("xdotool does not find the window");
  return xdotool.readAllStandardOutput();
}

}  // namespace

Times Measure(Subject eSubject, int nRate, int nDatagrams) {
  Place place(eSubject == Subject::Model ? Place::View::Model : Place::View::Text);
  QProcess sender;
  place.Prepare(sender);
  sender.setProcessChannelMode(QProcess::SeparateChannels);
  sender.start(
      Place::Built("quillorbit-send"),
      {"--measure", "--csv", "--settle", QString::number(nSettleSeconds), "--port", place.Port(),
       "--rate", QString::number(nRate), "--count", QString::number(nDatagrams)});
  if (!sender.waitForStarted()) throw std::runtime_error("quillorbit-send does not start");
  while (!QFile::exists(place.Socket()) && !sender.waitForFinished(20)) continue;

  QProcess subject;
  place.Prepare(subject);
  if (eSubject == Subject::BareLoop)
    subject.start(Place::Built("bench_bare_loop"), {place.Port()});
  else
    subject.start(place.Program(), QStringList());
  if (eSubject == Subject::Hidden) WithWindow({"windowminimize"});
  FrameCounter frames;
  if (eSubject == Subject::Model) frames.Watch(WithWindow({}).trimmed().toUInt());
  QThread::sleep(nSettleSeconds);

  frames.Restart();
  const double dCpuBefore = CpuMilliseconds(subject);
  while (!sender.waitForFinished(10)) frames.Count();
  const double dCpu = CpuMilliseconds(subject) - dCpuBefore;
  if (sender.exitCode() != 0)
    throw std::runtime_error("quillorbit-send: " + sender.readAllStandardError().toStdString());
  const QStringList fields = QString(sender.readAllStandardOutput()).trimmed().split(',');
  End(subject);
  if (fields.size() != 9) throw std::runtime_error("quillorbit-send printed no measurement");
  return {fields[2].toDouble(),
          fields[5].toDouble(),
          fields[6].toDouble(),
          fields[7].toDouble(),
          fields[8].toDouble(),
          static_cast<double>(frames.Frames()),
          dCpu};
}

}  // namespace quillorbit::bench
