#include <array>
#include <cstdio>
#include <vector>

#include "measure.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr int nSeconds = 20;

struct Row {
  std::string sName;
  Subject::Result result;
};

Row Measure(Scene eScene, const std::string& sName, const QString& sProgram, int nRate) {
  Subject subject(eScene, sProgram);
  Row row = {sName, subject.Measure(nRate, nSeconds)};
  subject.End();
  return row;
}

void PrintAll(const std::vector<Row>& rows, int nRate) {
  PrintHead("Sending to report at the user-space driver, " + std::to_string(nRate) +
            " datagrams/s for " + std::to_string(nSeconds) + " s each, in turn");
  for (const Row& row : rows) Print(row.sName, row.result.latency, rows[0].result.latency);
  std::printf("  %-33s %9s %11s %10s %18s %10s\n", "and the picture meanwhile", "frames/s",
              "program: %", "ms/frame", "X server: %", "ms/frame");
  for (const Row& row : rows) {
    const Cost& cost = row.result.cost;
    std::printf("  %-33s %9.1f", row.sName.c_str(), cost.dFrames);
    for (const auto& [nWidth, dMilliseconds] : {std::pair(11, cost.dProgram), {18, cost.dServer}}) {
      std::printf(" %*.1f", nWidth, dMilliseconds / 10);
      if (cost.dFrames > 0)
        std::printf(" %10.2f", dMilliseconds / cost.dFrames);
      else
        std::printf(" %10s", "-");
    }
    std::printf("\n");
  }
  std::fflush(stdout);
}

}  // namespace

void View(const Builds& builds) {
  constexpr std::array scenes = {std::pair(Scene::Hidden, "window hidden"),
                                 std::pair(Scene::View, "3D view"),
                                 std::pair(Scene::Overlay, "3D view with texts")};
  for (const int nRate : {1000, 60}) {
    std::vector<Row> rows = {
        Measure(Scene::BareLoop, "bare epoll loop", builds[0].sProgram, nRate)};
    for (const auto& [eScene, sName] : scenes)
      for (const Build& build : builds)
        rows.push_back(Measure(eScene, sName + build.sSuffix, build.sProgram, nRate));
    PrintAll(rows, nRate);
  }
}

}  // namespace quillorbit::bench
