#include <gtest/gtest.h>
#include <iostream>
#include <string_view>

#include <QCoreApplication>

#include "platform/linux/process/process.h"

int main(int argc, char** argv) {
  // The process tests start copies of this program that tell what they know of themselves.
  const quillorbit::linux_adapter::LinuxProcess process(argc, argv);
  if (argc > 1 && std::string_view(argv[1]) == "--describe") {
    std::cout << process.Path() << '|' << process.EXEName() << '|' << process.Command() << '|'
              << process.PrevInstance() << '|' << process.PathSeparator();
    return 0;
  }
  const QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
