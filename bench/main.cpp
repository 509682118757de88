#include <cstdio>
#include <exception>

#include <QCoreApplication>

#include "sections.h"

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  try {
    quillorbit::bench::Handler();
    quillorbit::bench::Latency();
    quillorbit::bench::Window();
    quillorbit::bench::Idle();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quillorbit-bench: %s\n", failure.what());
    return 1;
  }
}
