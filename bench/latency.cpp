#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include <QFile>
#include <QProcess>
#include <QStringList>

#include "place.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr int nDatagrams = 10'000;
constexpr int nRate = 1000;  // a second
constexpr int nRounds = 3;

enum class Subject { BareLoop, Hidden, Visible };
constexpr std::array subjects = {Subject::BareLoop, Subject::Hidden, Subject::Visible};
constexpr std::array sNames = {"bare epoll loop", "quillorbit, window hidden",
                               "quillorbit, window visible"};

/// Times in microseconds.
struct Times {
  double dLost, dMedian, dP90, dP99, dMost;
};

/// Minimises the window, which hides it. There has to be a window manager.
void HideWindow() {
  QProcess xdotool;
  xdotool.start("xdotool",
                {"search", "--sync", "--onlyvisible", "--name", "^Quillorbit", "windowminimize"});
  if (!xdotool.waitForFinished(10'000) || xdotool.exitCode() != 0)
    throw std::runtime_error("xdotool could not minimise the window");
}

Times Measure(Subject eSubject) {
  Place place;
  QProcess sender;
  place.Prepare(sender);
  sender.setProcessChannelMode(QProcess::SeparateChannels);
  sender.start(Place::Built("quillorbit-send"),
               {"--measure", "--csv", "--settle", "2", "--port", place.Port(), "--rate",
                QString::number(nRate), "--count", QString::number(nDatagrams)});
  if (!sender.waitForStarted()) throw std::runtime_error("quillorbit-send does not start");
  while (!QFile::exists(place.Socket()) && !sender.waitForFinished(20)) continue;

  QProcess subject;
  place.Prepare(subject);
  if (eSubject == Subject::BareLoop)
    subject.start(Place::Built("bench_bare_loop"), {place.Port()});
  else
    subject.start(place.Program(), QStringList());
  if (eSubject == Subject::Hidden) HideWindow();

  if (!sender.waitForFinished(120'000) || sender.exitCode() != 0)
    throw std::runtime_error("quillorbit-send: " + sender.readAllStandardError().toStdString());
  const QStringList fields = QString(sender.readAllStandardOutput()).trimmed().split(',');
  End(subject);
  if (fields.size() != 9) throw std::runtime_error("quillorbit-send printed no measurement");
  return {fields[2].toDouble(), fields[5].toDouble(), fields[6].toDouble(), fields[7].toDouble(),
          fields[8].toDouble()};
}

/// The round in the middle, field by field; what was lost is added up.
Times Middle(const std::vector<Times>& rounds) {
  const auto middle = [&](double Times::*field) {
    std::vector<double> values;
    for (const Times& times : rounds) values.push_back(times.*field);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
  };
  double dLost = 0;
  for (const Times& times : rounds) dLost += times.dLost;
  return {dLost, middle(&Times::dMedian), middle(&Times::dP90), middle(&Times::dP99),
          middle(&Times::dMost)};
}

}  // namespace

void Latency() {
  std::array<std::vector<Times>, subjects.size()> results;
  for (int i = 0; i < nRounds; ++i)
    for (std::size_t k = 0; k < subjects.size(); ++k) results[k].push_back(Measure(subjects[k]));

  std::printf(
      "\nSending to report at the user-space driver, %d datagrams at %d/s, "
      "middle of %d rounds in turn\n",
      nDatagrams, nRate, nRounds);
  std::printf("  %-28s %6s %10s %8s %8s %8s %14s %10s\n", "", "lost", "median us", "p90", "p99",
              "max", "ratio: median", "p99");
  const Times bare = Middle(results[0]);
  for (std::size_t k = 0; k < subjects.size(); ++k) {
    const Times times = Middle(results[k]);
    std::printf("  %-28s %6.0f %10.1f %8.1f %8.1f %8.1f %14.2f %10.2f\n", sNames[k], times.dLost,
                times.dMedian, times.dP90, times.dP99, times.dMost, times.dMedian / bare.dMedian,
                times.dP99 / bare.dP99);
  }
}

}  // namespace quillorbit::bench
