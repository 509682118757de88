// quillorbit-bench [SECTION...]: measures all of them, or those that are named.

#include <array>
#include <cstdio>
#include <exception>
#include <utility>

#include <QCoreApplication>
#include <QStringList>

#include "sections.h"

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  using Section = std::pair<const char*, void (*)()>;
  using namespace quillorbit;
  const std::array<Section, 6> sections = {{{"handler", bench::Handler},
                                            {"frame", bench::Frame},
                                            {"latency", bench::Latency},
                                            {"view", bench::View},
                                            {"window", bench::Window},
                                            {"idle", bench::Idle}}};
  const QStringList wanted = QCoreApplication::arguments().mid(1);
  try {
    for (const auto& [sName, section] : sections)
      if (wanted.isEmpty() || wanted.contains(sName)) section();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quillorbit-bench: %s\n", failure.what());
    return 1;
  }
}
