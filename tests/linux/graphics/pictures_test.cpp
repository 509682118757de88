// The whole program on the real toolkit and the real OpenGL: what its view shows.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <utility>

#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QPainter>
#include <QSlider>
#include <QWidget>

#include "app/frmMain.h"
#include "fakes/platform.h"
#include "linux/graphics/graphics.h"
#include "linux/graphics/reference_renderer.h"
#include "linux/support.h"
#include "platform/linux/graphics/dx8vb.h"
#include "platform/linux/process/resources.h"
#include "platform/linux/window/fonts.h"
#include "platform/linux/window/toolkit.h"

namespace quillorbit::view_tests {
namespace {

using linux_tests::Settle;
using linux_tests::WaitUntil;

constexpr MotionData rest = {.x = 75, .y = 75, .z = 75, .zr = 75};

/// Finds the model where it is, and no profile but the one that the test stores.
struct ModelProcess : fakes::FakeProcess {
  using FakeProcess::FakeProcess;
  std::string Path() const override { return QUILLORBIT_RESOURCES; }
  char PathSeparator() const override { return '/'; }
};

struct Tolerance {
  double dMean;  ///< of the difference of a channel, in its 255 steps
  double dFar;   ///< the share of pixels that may differ by more than 16 steps
};

// The driver rounds vertices and a texture's weights to 1/256: a few pixels on an edge fall to the
// other side, and those inside are a step away. That makes 0.025 on average, and 3 far pixels.
constexpr Tolerance tolerance = {0.06, 0.0001};

/// Compares, and keeps both pictures and their difference beside the test when they do not match.
testing::AssertionResult Match(const QImage& picture, const QImage& reference) {
  if (picture.size() != reference.size())
    return testing::AssertionFailure()
           << "a picture of " << picture.width() << " x " << picture.height() << " pixels";
  QImage difference(picture.size(), QImage::Format_RGB32);
  double dSum = 0, dFar = 0;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const QRgb a = picture.pixel(x, y), b = reference.pixel(x, y);
      const int nRed = std::abs(qRed(a) - qRed(b)), nGreen = std::abs(qGreen(a) - qGreen(b)),
                nBlue = std::abs(qBlue(a) - qBlue(b));
      dSum += nRed + nGreen + nBlue;
      if (std::max({nRed, nGreen, nBlue}) > 16) ++dFar;
      difference.setPixel(x, y, qRgb(nRed, nGreen, nBlue));
    }
  }
  const double dPixels = 1.0 * picture.width() * picture.height();
  const double dMean = dSum / (3 * dPixels);
  dFar /= dPixels;
  if (dMean < tolerance.dMean && dFar < tolerance.dFar) return testing::AssertionSuccess();
  const QString sPath = QCoreApplication::applicationDirPath() + "/view_test-" +
                        testing::UnitTest::GetInstance()->current_test_info()->name() + "-";
  picture.save(sPath + "picture.png");
  reference.save(sPath + "reference.png");
  difference.save(sPath + "difference.png");
  return testing::AssertionFailure()
         << "mean difference " << dMean << ", " << 100 * dFar
         << " % of the pixels are far away; see " << sPath.toStdString() << "*.png";
}

class Pictures : public testing::Test, private QObject {
 protected:
  void Start(const std::string& sCommand = "") {
    process.sCommand = sCommand;
    // So little smoothing that a single datagram is shown as it is.
    fake.StoreProfile({{"samples", "1000000000"}});
    fake.xml.store.files[QUILLORBIT_RESOURCES "/Quillorbit.setup"] =
        fake.xml.store.files.at(fake.sProfile);
    main.Form_Load();
    fake.log.Mute(true);
    surface = Find<QWidget>("picSurface");
    surface->installEventFilter(this);
    Settle();
    ASSERT_TRUE(window().isVisible());
  }

  template <class Widget>
  static Widget* Find(const QString& sName) {
    for (QWidget* const pWidget : QApplication::allWidgets())
      if (pWidget->objectName() == sName) return qobject_cast<Widget*>(pWidget);
    return nullptr;
  }
  QWidget& window() { return *surface->window(); }

  QImage Grab() const { return surface->grab().toImage().convertToFormat(QImage::Format_RGB32); }
  /// Runs the event loop until the surface is painted.
  void AwaitPaint(int nBefore) {
    ASSERT_TRUE(WaitUntil([&] { return nPaints > nBefore; }));
  }
  /// What the view shows after a datagram.
  QImage Show(const MotionData& motion) {
    const int nBefore = nPaints;
    fake.Arrive(motion);
    AwaitPaint(nBefore);
    return Grab();
  }
  void AwaitLossOfSignal() {
    const int nBefore = nPaints;
    ASSERT_TRUE(WaitUntil([&] { return window().windowTitle().contains("No signal"); }));
    if (window().isVisible()) AwaitPaint(nBefore);
  }

  static reference::Pose PoseOf(const MotionData& motion) {
    const auto angle = [](std::int32_t n) { return n * 1.2 - 90; };
    return {angle(motion.x), angle(motion.y), angle(motion.z), angle(motion.zr)};
  }
  QImage Reference(const MotionData& motion) const {
    return model.Picture(PoseOf(motion), surface->size());
  }

  Graphics graphics;
  int nArguments = 1;
  char sProgram[10] = "view_test";
  char* arguments[2] = {sProgram, nullptr};
  linux_adapter::LinuxResources resources;
  linux_adapter::LinuxToolkit toolkit{nArguments, arguments, resources};
  linux_adapter::LinuxFonts fonts{[] { return 1.0; }};
  linux_adapter::LinuxDX8VB dx8vb{fonts, graphics.contexts};
  fakes::FakePlatform fake;
  ModelProcess process{fake.log};
  platform::Platform services{toolkit,       fake.shell, fake.windows, fake.udpSockets,
                              fake.device,   fake.xml,   process,      fake.resources,
                              fake.codePage, fonts,      dx8vb};
  frmMain main{services};
  const reference::Model model{QUILLORBIT_RESOURCES};
  QWidget* surface = nullptr;
  int nPaints = 0;

 private:
  bool eventFilter(QObject*, QEvent* pEvent) override {
    if (pEvent->type() == QEvent::Paint) ++nPaints;
    return false;
  }
};

TEST_F(Pictures, EveryAttitudeIsDrawnAsTheFormulasSay) {
  Start("video");  // the window as designed
  EXPECT_EQ(surface->size(), QSize(634, 421));
  EXPECT_TRUE(Match(Grab(), model.Picture({}, surface->size())));  // before any datagram
  // clang-format off
  constexpr MotionData attitudes[] = {
      rest,
      // About one axis, about both
      {0, 75, 75, 75, 0}, {150, 75, 75, 75, 0}, {75, 0, 75, 75, 0}, {75, 150, 75, 75, 0},
      {113, 75, 75, 75, 0}, {75, 37, 75, 75, 0}, {37, 113, 75, 75, 0}, {150, 113, 75, 75, 0},
      // From the camera's corners
      {75, 75, 0, 0, 0}, {75, 75, 0, 150, 0}, {75, 75, 150, 0, 0}, {75, 75, 150, 150, 0},
      // All of it; upside down; from behind
      {20, 120, 100, 60, 0}, {131, 9, 33, 140, 0}, {225, 75, 75, 75, 0}, {90, 225, 80, 100, 0}};
  // clang-format on
  for (const MotionData& motion : attitudes)
    EXPECT_TRUE(Match(Show(motion), Reference(motion)))
        << motion.x << ' ' << motion.y << ' ' << motion.z << ' ' << motion.zr;
}

TEST_F(Pictures, WithoutASignalTheModelRestsInRedLight) {
  Start("video");
  const MotionData turned = {.x = 100, .y = 30, .z = 90, .zr = 50};
  EXPECT_TRUE(Match(Show(turned), Reference(turned)));
  AwaitLossOfSignal();
  EXPECT_TRUE(Match(Grab(), model.Picture({.bSignal = false}, surface->size())));
  // The next datagram is shown before it brings the signal back.
  reference::Pose red = PoseOf(turned);
  red.bSignal = false;
  EXPECT_TRUE(Match(Show(turned), model.Picture(red, surface->size())));
  EXPECT_TRUE(Match(Show(turned), Reference(turned)));
}

TEST_F(Pictures, TheWindowsFirstSizeIsTheBackBuffers) {
  Start();
  EXPECT_EQ(surface->size(), QSize(804, 440));
  EXPECT_TRUE(Match(Grab(), Reference(rest)));
  for (const MotionData& motion : {MotionData{.x = 20, .y = 120, .z = 100, .zr = 60},
                                   MotionData{.x = 150, .y = 40, .z = 0, .zr = 150}})
    EXPECT_TRUE(Match(Show(motion), Reference(motion)));
}

TEST_F(Pictures, TheBackBufferIsStretchedToAResizedWindow) {
  Start("video");
  const QImage made = model.Picture(PoseOf(rest), surface->size());
  for (const QSize size : {QSize(300, 200), QSize(1300, 1000)}) {
    fake.Arrive(rest);
    window().resize(size);
    Settle();
    ASSERT_EQ(surface->size(), QSize(size.width(), size.height() - 27));
    QImage expected(surface->size(), QImage::Format_RGB32);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(expected.rect(), made);
    EXPECT_TRUE(Match(Grab(), expected)) << "the last frame";
    EXPECT_TRUE(Match(Show(rest), expected)) << "a new frame";
  }
}

/// The overlay's lines that differ, from 0; -1 for anything outside of them.
std::set<int> ChangedLines(const QImage& a, const QImage& b) {
  std::set<int> lines;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x)
      if (a.pixel(x, y) != b.pixel(x, y))
        lines.insert(x < 280 && y >= 20 && y < 160 ? (y - 20) / 20 : -1);
  return lines;
}

TEST_F(Pictures, TheOverlayShowsSevenLinesOfItsOwn) {
  enum Line { Filter, Packets, X, Y, Z, Zr, Buttons };
  Start("video");
  // Seen edge on, the model keeps away from the lines.
  MotionData motion = {.x = 75, .y = 150, .z = 75, .zr = 75};
  const QImage plain = Show(motion);
  Find<QAbstractButton>("chkDebug")->click();
  QImage overlay = Show(motion);
  EXPECT_EQ(ChangedLines(plain, overlay), (std::set<int>{0, 1, 2, 3, 4, 5, 6}));

  const auto font = fonts.NewStdFont();
  font->Name("Verdana");
  font->Size(12);
  platform::TextCoverage text;
  int iTop = 20;
  for (const char* sText : {"Filter: 1000000000", "Packets received: 2 (0/s)", "X:75 (75)",
                            "Y:150 (150)", "Z:75", "Zr:75", "Buttons: 0"}) {
    fonts.DrawText(font->hFont(), sText, 280, 20, 0, text);
    for (int i = 0; i < 280 * 20; ++i) {
      const QRgb ink = overlay.pixel(i % 280, iTop + i / 280);
      const int nCovered = text.pixels[static_cast<std::size_t>(i)];
      EXPECT_NEAR(qRed(ink), nCovered, 1) << sText << i;
      EXPECT_NEAR(qGreen(ink), nCovered * 204 / 255, 1) << sText << i;
      EXPECT_EQ(qBlue(ink), 0) << sText << i;
    }
    if (HasFailure()) return;
    iTop += 20;
  }

  // Every datagram counts, and what it changes is told in its own line. A turn of 360 is none.
  const auto changed = [&](const QImage& picture) {
    return ChangedLines(std::exchange(overlay, picture).copy(0, 0, 280, 160),
                        picture.copy(0, 0, 280, 160));
  };
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets}));
  motion.x += 300;
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets, X}));
  motion.y += 300;
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets, Y}));
  motion.z += 1;
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets, Z}));
  motion.zr += 1;
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets, Zr}));
  motion.b = 5;
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets, Buttons}));
  Find<QSlider>("sldFilter")->setValue(7);
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{Packets, Filter}));

  Find<QAbstractButton>("chkDebug")->click();
  EXPECT_EQ(changed(Show(motion)), (std::set<int>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(Match(overlay, Reference(motion)));
}

#ifdef __SANITIZE_ADDRESS__
constexpr double dMostGrowth = 400e6;  // the sanitizer holds back what is freed, and tells leaks
#else
constexpr double dMostGrowth = 4e6;
#endif

/// What the program has in memory, in bytes.
double ResidentMemory() {
  std::ifstream file("/proc/self/statm");
  double dAll = 0, dResident = 0;
  file >> dAll >> dResident;
  return dResident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

TEST_F(Pictures, ALongRunTakesNoMemoryAndEndsWithTheRightPicture) {
  const char* const sFrames = std::getenv("QUILLORBIT_VIEW_FRAMES");
  const int nFrames = sFrames == nullptr ? 300 : std::max(100, std::atoi(sFrames));
  constexpr int nWarmUp = 50, nCompared = 50;
  Start("video");
  Find<QAbstractButton>("chkDebug")->click();  // with texts that change all the time
  std::mt19937 random(8);
  const auto axis = [&] { return static_cast<std::int32_t>(random() % 151); };
  double dBefore = 0;
  for (int i = 1; i <= nFrames; ++i) {
    for (unsigned n = random() % 4; n > 0; --n)  // datagrams that come faster than the display
      fake.Arrive({.x = axis(), .y = axis(), .z = axis(), .zr = axis(), .b = axis()});
    const MotionData motion = {.x = axis(), .y = axis(), .z = axis(), .zr = axis(), .b = axis()};
    QImage picture = Show(motion);
    ASSERT_FALSE(HasFatalFailure()) << "frame " << i;
    if (i % nCompared == 0 || i == nFrames) {
      QImage expected = Reference(motion);
      for (QImage* pImage : {&picture, &expected})
        QPainter(pImage).fillRect(0, 20, 280, 140, Qt::black);  // the overlay
      ASSERT_TRUE(Match(picture, expected)) << "frame " << i;
    }
    if (i == nWarmUp) dBefore = ResidentMemory();
  }
  EXPECT_LT(ResidentMemory() - dBefore, dMostGrowth);
}

struct LostContext : Pictures {
  /// Up to the point where the driver works again: the window goes, and with it the old device.
  void Lose() {
    Start();
    const MotionData turned = {.x = 100, .y = 30, .z = 90, .zr = 50};
    const QImage before = Show(turned);
    graphics.LoseContext();
    graphics.bDriver = false;
    for (int i = 0; i < 3; ++i) {
      fake.Arrive(rest);
      linux_tests::Settle();
      EXPECT_TRUE(window().isVisible());
      EXPECT_EQ(Grab(), before);
    }
    graphics.bDriver = true;
    window().resize(500, 600);  // the new device will have its size
    EXPECT_TRUE(WaitUntil([&] {
      fake.Arrive(rest);
      return !window().isVisible();
    }));
  }
};

TEST_F(LostContext, IsReplacedWhenTheWindowIsShownAgain) {
  Lose();
  window().show();
  Settle();
  const MotionData motion = {.x = 60, .y = 90, .z = 70, .zr = 85};
  EXPECT_TRUE(Match(Show(motion), Reference(motion)));
  EXPECT_EQ(surface->size(), QSize(500, 573));
}

TEST_F(LostContext, IsReplacedByTheWatchdogForAHiddenWindow) {
  Lose();
  AwaitLossOfSignal();
  EXPECT_FALSE(window().isVisible());
  const int nBefore = nPaints;
  window().show();
  AwaitPaint(nBefore);
  Settle();
  EXPECT_TRUE(Match(Grab(), model.Picture({.bSignal = false}, surface->size())));
}

}  // namespace
}  // namespace quillorbit::view_tests
