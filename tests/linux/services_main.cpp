#include <gtest/gtest.h>
#include <iostream>

#include <unistd.h>

#include <QCoreApplication>

#include "platform/linux/process/process.h"

int main(int argc, char** argv) {
  // The process tests start copies of this program, which run until they are killed.
  if (argc > 1 && argv[1] == std::string_view("--describe")) {
    const quillorbit::linux_adapter::LinuxProcess process(argc, argv);
    std::cout << process.Path() << '|' << process.EXEName() << '|' << process.Command() << '|'
              << process.PrevInstance() << std::endl;
    for (;;) pause();
  }
  const QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
