#include <gtest/gtest.h>

#include <QByteArray>

int main(int argc, char** argv) {
  // A display without a screen, whose windows have no frame: they are as large as they are asked
  // to.
  qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" QUILLORBIT_VIEW_DISPLAY);
  qputenv("LIBGL_ALWAYS_SOFTWARE", "1");  // the same pictures on every machine
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
