// quillorbit-bench [--beside PROGRAM] [SECTION...]: measures what is named, or all of it; with
// another program, all that measures it too.

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <utility>

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

#include "place.h"
#include "sections.h"

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  using namespace quillorbit;
  bench::Builds builds = {{bench::Place::Built("quillorbit"), ""}};
  using Section = std::pair<QString, std::function<void()>>;
  const std::array<Section, 5> sections = {{{"handler", bench::Handler},
                                            {"view", [&] { bench::View(builds); }},
                                            {"busy", [&] { bench::Busy(builds); }},
                                            {"window", bench::Window},
                                            {"idle", bench::Idle}}};
  QStringList wanted = QCoreApplication::arguments().mid(1);
  try {
    if (!wanted.isEmpty() && wanted[0] == "--beside") {
      if (wanted.size() < 2 || !QFileInfo(wanted[1]).isExecutable())
        throw std::runtime_error("--beside: needs a program");
      builds.push_back({wanted[1], ", beside"});
      wanted.remove(0, 2);
      if (wanted.isEmpty()) wanted = {"view", "busy"};
    }
    for (const QString& sWanted : wanted)
      if (std::ranges::find(sections, sWanted, &Section::first) == sections.end())
        throw std::runtime_error("no section \"" + sWanted.toStdString() + '"');
    for (const auto& [sName, section] : sections)
      if (wanted.isEmpty() || wanted.contains(sName)) section();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quillorbit-bench: %s\n", failure.what());
    return 1;
  }
}
