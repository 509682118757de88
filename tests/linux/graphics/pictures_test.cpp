// The whole program on the real toolkit and the real OpenGL: what its view shows.

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <string>

#include <QAbstractButton>
#include <QApplication>
#include <QPainter>
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
constexpr MotionData turned = {.x = 100, .y = 30, .z = 90, .zr = 50};

/// Finds the model where it is, and no profile but the one that the test stores.
struct ModelProcess : fakes::FakeProcess {
  using FakeProcess::FakeProcess;
  std::string Path() const override { return QUILLORBIT_RESOURCES; }
  char PathSeparator() const override { return '/'; }
};

// The driver rounds vertices and a texture's weights to 1/256: a few pixels on an edge fall to the
// other side, and those inside are a step away. That makes 0.025 on average, and 3 far pixels.
constexpr double dMostMean = 0.06;   // difference of a channel, in its 255 steps
constexpr double dMostFar = 0.0001;  // share of pixels that differ by more than 16 steps

/// Compares, and keeps both pictures beside the test when they do not match.
testing::AssertionResult Match(const QImage& picture, const QImage& reference) {
  if (picture.size() != reference.size()) return testing::AssertionFailure() << "another size";
  double dSum = 0, dFar = 0;
  const double dPixels = 1.0 * picture.width() * picture.height();
  for (int i = 0; i < picture.width() * picture.height(); ++i) {
    const QRgb a = picture.pixel(i % picture.width(), i / picture.width());
    const QRgb b = reference.pixel(i % picture.width(), i / picture.width());
    const auto differences = {std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                              std::abs(qBlue(a) - qBlue(b))};
    dSum = std::accumulate(differences.begin(), differences.end(), dSum);
    if (std::max(differences) > 16) ++dFar;
  }
  if (dSum < 3 * dPixels * dMostMean && dFar < dPixels * dMostFar)
    return testing::AssertionSuccess();
  const QString sPath = QCoreApplication::applicationDirPath() + "/view_test-";
  picture.save(sPath + "picture.png");
  reference.save(sPath + "reference.png");
  return testing::AssertionFailure()
         << "mean difference " << dSum / dPixels / 3 << ", " << 100 * dFar / dPixels
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
    const auto angle = [](std::int32_t n) { return static_cast<float>(n) * 1.2F - 90; };
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
  for (const MotionData& motion :
       {rest, MotionData{0, 75, 75, 75, 0}, MotionData{75, 37, 75, 75, 0},
        MotionData{75, 75, 0, 0, 0}, MotionData{75, 75, 150, 0, 0}, MotionData{20, 120, 100, 60, 0},
        MotionData{131, 9, 33, 140, 0}, MotionData{225, 75, 75, 75, 0}})
    EXPECT_TRUE(Match(Show(motion), Reference(motion))) << motion.x << ' ' << motion.y;

  AwaitLossOfSignal();
  EXPECT_TRUE(Match(Grab(), model.Picture({.bSignal = false}, surface->size())));
  reference::Pose red = PoseOf(turned);  // a datagram is shown before it brings the signal back
  red.bSignal = false;
  EXPECT_TRUE(Match(Show(turned), model.Picture(red, surface->size())));
  EXPECT_TRUE(Match(Show(turned), Reference(turned)));
}

TEST_F(Pictures, TheBackBufferHasTheWindowsFirstSizeAndIsStretched) {
  Start();
  const QImage made = Reference(turned);
  EXPECT_EQ(made.size(), QSize(804, 440));
  EXPECT_TRUE(Match(Show(turned), made));
  for (const QSize size : {QSize(300, 200), QSize(1300, 1000)}) {
    window().resize(size);
    Settle();
    QImage expected(size.width(), size.height() - 27, QImage::Format_RGB32);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(expected.rect(), made);
    EXPECT_TRUE(Match(Grab(), expected)) << "the last frame";
    EXPECT_TRUE(Match(Show(turned), expected)) << "a new frame";
  }
}

TEST_F(Pictures, TheOverlayShowsSevenLinesInItsColour) {
  Start("video");
  // Seen edge on, the model keeps away from the lines.
  const MotionData motion = {.x = 75, .y = 150, .z = 75, .zr = 75};
  Find<QAbstractButton>("chkDebug")->click();
  const QImage picture = Show(motion);
  QImage expected = Reference(motion);
  const auto font = fonts.NewStdFont();
  font->Name("Verdana");
  font->Size(12);
  platform::TextCoverage text;
  int iTop = 20;
  for (const char* sText : {"Filter: 1000000000", "Packets received: 1 (0/s)", "X:75 (75)",
                            "Y:150 (150)", "Z:75", "Zr:75", "Buttons: 0"}) {
    fonts.DrawText(font->hFont(), sText, 280, 20, 0, text);
    for (int i = 0; i < 280 * 20; ++i) {
      const int n = text.pixels[static_cast<std::size_t>(i)];
      expected.setPixel(i % 280, iTop + i / 280, qRgb(n, n * 204 / 255, 0));
    }
    iTop += 20;
  }
  EXPECT_TRUE(Match(picture, expected));
  Find<QAbstractButton>("chkDebug")->click();
  EXPECT_TRUE(Match(Show(motion), Reference(motion)));
}

TEST_F(Pictures, ALostContextIsReplacedWhenTheDriverIsBack) {
  Start();
  const QImage before = Show(turned);
  graphics.LoseContext();
  graphics.bDriver = false;
  for (int i = 0; i < 3; ++i) {
    fake.Arrive(rest);
    Settle();
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(Grab(), before);
  }
  graphics.bDriver = true;
  window().resize(500, 600);  // the new device will have its size
  EXPECT_TRUE(WaitUntil([&] {
    fake.Arrive(rest);
    return !window().isVisible();
  }));
  AwaitLossOfSignal();  // the watchdog makes it anew for a hidden window
  EXPECT_FALSE(window().isVisible());
  const int nBefore = nPaints;
  window().show();
  AwaitPaint(nBefore);
  Settle();
  EXPECT_EQ(surface->size(), QSize(500, 573));
  EXPECT_TRUE(Match(Grab(), model.Picture({.bSignal = false}, surface->size())));
}

}  // namespace
}  // namespace quillorbit::view_tests
