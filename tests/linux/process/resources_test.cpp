#include "platform/linux/process/resources.h"

#include <gtest/gtest.h>
#include <set>

namespace quillorbit::linux_tests {
namespace {

/// The pixels of an icon that are opaque, in reading order; all the others have to be clear.
std::set<int> Shape(const QImage& image) {
  std::set<int> opaque;
  for (int i = 0; i < image.width() * image.height(); ++i) {
    const int nAlpha = qAlpha(image.pixel(i % image.width(), i / image.width()));
    EXPECT_TRUE(nAlpha == 0 || nAlpha == 255) << i;
    if (nAlpha == 255) opaque.insert(i);
  }
  return opaque;
}

TEST(Resources, HaveMaskedIconsScaledFromTheNearestSize) {
  linux_adapter::LinuxResources resources;
  const auto load = [&](const char* sName, int cx, int cy) {
    return resources.LoadImageA(1, sName, platform::IMAGE_ICON, cx, cy, platform::LR_SHARED);
  };
  const auto image = [&](const char* sName, int n) { return resources.Image(load(sName, n, n)); };
  for (const int n : {16, 32, 48}) EXPECT_LT(Shape(image("AAA", n)).size(), n * n * 0.9) << n;
  EXPECT_NE(Shape(image("OK", 16)), Shape(image("ERROR", 16)));
  for (const auto& [nFrom, n] : {std::pair(16, 1), {32, 24}, {48, 256}})
    EXPECT_EQ(image("AAA", n),
              image("AAA", nFrom).scaled(n, n, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  EXPECT_EQ(load("OK", 16, 16), load("OK", 16, 16));
  for (const char* sName : {"", "NONE", "aaa", "../ICON/AAA"}) EXPECT_EQ(load(sName, 16, 16), 0U);
}

}  // namespace
}  // namespace quillorbit::linux_tests
