// The whole program on the real toolkit and the real OpenGL: what its view shows. At the end, the
// device alone: what the program's pictures do not show.

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QPainter>

#include "app/frmMain.h"
#include "fakes/platform.h"
#include "linux/graphics/reference_renderer.h"
#include "linux/support.h"
#include "platform/d3dx8/matrix.h"
#include "platform/linux/graphics/dx8vb.h"
#include "platform/linux/graphics/gl_device.h"
#include "platform/linux/process/resources.h"
#include "platform/linux/window/fonts.h"
#include "platform/linux/window/toolkit.h"

namespace quillorbit::view_tests {
namespace {

using namespace linux_tests;

constexpr MotionData rest = {.x = 75, .y = 75, .z = 75, .zr = 75};
constexpr MotionData turned = {.x = 100, .y = 30, .z = 90, .zr = 50};

/// A graphics driver whose failures are the test's to decide. Its contexts are real.
struct Graphics {
  Graphics() {
    // Windows without frames, which are as large as they are asked to be.
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" QUILLORBIT_VIEW_DISPLAY);
    qputenv("LIBGL_ALWAYS_SOFTWARE", "1");  // the same pictures on every machine
    bDriver = true;
    contexts = std::make_shared<linux_adapter::GlContexts>(&NewContext);
  }

  static inline std::atomic<bool> bDriver;  ///< whether contexts can be had
  static inline std::atomic<bool> bLost;    ///< the context that is asked next is lost
  std::shared_ptr<linux_adapter::GlContexts> contexts;

 private:
  static std::shared_ptr<linux_adapter::GlContext> NewContext() {
    if (!bDriver) throw std::runtime_error("there is no driver at the moment");
    auto context = std::make_shared<linux_adapter::GlContext>();
    context->gl.GetGraphicsResetStatus = [] {
      return bLost.exchange(false) ? GLenum{GL_UNKNOWN_CONTEXT_RESET} : GLenum{GL_NO_ERROR};
    };
    return context;
  }
};

/// Finds the model where it is, and no profile but the one that the test stores.
struct ModelProcess : fakes::FakeProcess {
  using FakeProcess::FakeProcess;
  std::string Path() const override { return QUILLORBIT_RESOURCES; }
  char PathSeparator() const override { return '/'; }
};

// The driver rounds vertices and a texture's weights to 1/256: a few pixels on an edge fall to the
// other side, and those inside are a step away. That makes 0.025 on average, and 3 far pixels.
constexpr double dMostMean = 0.06;   // difference of a channel, in its 255 steps
constexpr double dMostFar = 0.0001;  // share of channels that differ by more than 16 steps

testing::AssertionResult Match(const QImage& picture, const QImage& reference) {
  if (picture.size() != reference.size()) return testing::AssertionFailure() << "another size";
  double dSum = 0, dFar = 0;
  const double dChannels = 3.0 * picture.width() * picture.height();
  for (qsizetype i = 0; i < picture.sizeInBytes(); ++i) {
    const int nDifference = std::abs(picture.constBits()[i] - reference.constBits()[i]);
    dSum += nDifference;
    if (nDifference > 16) ++dFar;
  }
  if (dSum < dChannels * dMostMean && dFar < dChannels * dMostFar)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << "mean difference " << dSum / dChannels << ", "
                                     << 100 * dFar / dChannels << " % are far away";
}

struct Pictures : testing::Test {
  void Start(const std::string& sCommand = "") {
    process.sCommand = sCommand;
    // So little smoothing that a single datagram is shown as it is.
    fake.StoreProfile({{"samples", "1000000000"}});
    fake.xml.store.files[QUILLORBIT_RESOURCES "/Quillorbit.setup"] =
        fake.xml.store.files.at(fake.sProfile);
    main.Form_Load();
    fake.log.Mute(true);
    for (QWidget* const pWidget : QApplication::topLevelWidgets())
      if (auto* const pSurface = pWidget->findChild<QWidget*>("picSurface")) surface = pSurface;
    Settle();
  }
  QWidget& window() { return *surface->window(); }

  QImage Grab() const { return surface->grab().toImage().convertToFormat(QImage::Format_RGB32); }
  /// Whether the view comes to show this; both pictures are kept beside the test when it does not.
  testing::AssertionResult Shows(const QImage& expected) {
    QImage shown;
    const QString sTitle = window().windowTitle();  // another when the signal is lost meanwhile
    const auto matches = [&] {
      if (window().windowTitle() == sTitle) shown = Grab();
      return bool(Match(shown, expected));
    };
    if (WaitUntil(matches)) return testing::AssertionSuccess();
    const QString sPath = QCoreApplication::applicationDirPath() + "/view_test-";
    shown.save(sPath + "picture.png");
    expected.save(sPath + "reference.png");
    return Match(shown, expected) << "; see " << sPath.toStdString() << "*.png";
  }
  bool LosesSignal() {
    return WaitUntil([&] { return window().windowTitle().contains("No signal"); });
  }

  static QImage Reference(const MotionData& motion, bool bSignal = true,
                          QSize size = QSize(634, 421)) {
    const auto angle = [](std::int32_t n) { return static_cast<float>(n) * 1.2F - 90; };
    return reference::Picture(
        QUILLORBIT_RESOURCES,
        {angle(motion.x), angle(motion.y), angle(motion.z), angle(motion.zr), bSignal}, size);
  }

  Graphics graphics;
  int nArguments = 1;
  char sProgram[10] = "view_test";
  char* arguments[2] = {sProgram, nullptr};
  linux_adapter::LinuxResources resources;
  linux_adapter::LinuxToolkit toolkit{nArguments, arguments, resources};
  linux_adapter::LinuxFonts fonts{[] { return 1.0; }};
  presentation::DrawingThreads threads{{.giveUp = &std::abort}};
  linux_adapter::LinuxDX8VB dx8vb{fonts, graphics.contexts, threads};
  fakes::FakePlatform fake;
  ModelProcess process{fake.log};
  platform::Platform services{toolkit,       fake.shell, fake.windows, fake.udpSockets,
                              fake.device,   fake.xml,   process,      fake.resources,
                              fake.codePage, fonts,      dx8vb};
  frmMain main{services};
  QWidget* surface = nullptr;
};

TEST_F(Pictures, EveryAttitudeIsDrawnAsTheFormulasSay) {
  const QImage atRest = Reference(rest);
  Start("video");              // the window as designed
  EXPECT_TRUE(Shows(atRest));  // before any datagram
  for (const MotionData& motion :
       {MotionData{0, 75, 75, 75, 0}, MotionData{75, 37, 75, 75, 0}, MotionData{75, 75, 0, 0, 0},
        MotionData{20, 120, 100, 60, 0}, MotionData{131, 9, 33, 140, 0},
        MotionData{225, 75, 75, 75, 0}}) {
    const QImage expected = Reference(motion);
    fake.Arrive(motion);
    EXPECT_TRUE(Shows(expected)) << motion.x << ' ' << motion.y;
  }
  EXPECT_TRUE(LosesSignal());
  EXPECT_TRUE(Shows(Reference(rest, false)));
  const QImage expected = Reference(turned, false);
  fake.Arrive(turned);  // shown before it brings the signal back
  EXPECT_TRUE(Shows(expected));
}

TEST_F(Pictures, TheBackBufferHasTheWindowsFirstSizeAndIsStretched) {
  Start();
  window().resize(1300, 1000);
  const QImage expected = Reference(turned, true, {804, 440});
  fake.Arrive(turned);
  EXPECT_TRUE(Shows(expected.scaled(1300, 973, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
}

TEST_F(Pictures, TheOverlayIsBlendedWithTheModelInItsColour) {
  const MotionData motion = {.x = 15, .y = 90, .z = 74, .zr = 76};
  QImage expected = Reference(motion);
  QImage texts(expected.size(), QImage::Format_ARGB32);
  texts.fill(Qt::transparent);
  const auto font = fonts.NewStdFont();
  font->Name("Verdana");
  font->Size(12);
  platform::TextCoverage text;
  int iTop = 20;
  for (const char* sText : {"Filter: 1000000000", "Packets received: 3 (0/s)", "X:15 (15)",
                            "Y:90 (90)", "Z:74", "Zr:76", "Buttons: 0"}) {
    fonts.DrawText(font->hFont(), sText, 280, 20, 0, text);
    for (int i = 0; i < 280 * 20; ++i)
      texts.setPixel(i % 280, iTop + i / 280,
                     qRgba(255, 204, 0, text.pixels[static_cast<std::size_t>(i)]));
    iTop += 20;
  }
  QPainter(&expected).drawImage(0, 0, texts);
  Start("video");
  window().findChild<QAbstractButton*>("chkDebug")->click();
  // With the third frame there are more texts than are kept as textures.
  for (const MotionData& next : {rest, turned, motion}) {
    const QImage before = Grab();
    fake.Arrive(next);
    EXPECT_TRUE(WaitUntil([&] { return Grab() != before; }));
  }
  EXPECT_TRUE(Shows(expected));
}

TEST_F(Pictures, ALostContextIsReplacedWhenTheDriverIsBack) {
  const QImage before = Reference(rest, true, {804, 440});
  Start();
  ASSERT_TRUE(Shows(before));
  graphics.bLost = true;
  graphics.bDriver = false;
  for (int i = 0; i < 30; ++i) {
    fake.Arrive(turned);
    Settle();
    ASSERT_TRUE(Match(Grab(), before));
  }
  graphics.bDriver = true;
  window().resize(500, 600);  // the new device will have its size
  EXPECT_TRUE(WaitUntil([&] {
    fake.Arrive(turned);
    return !window().isVisible();
  }));
  EXPECT_TRUE(LosesSignal());  // the watchdog makes it anew for a hidden window
  window().show();
  EXPECT_TRUE(Shows(Reference(rest, false, {500, 573})));
}

TEST_F(Pictures, ADeviceLightsByTheFormulaWhateverTheScale) {
  linux_adapter::DrawingSurface small(nullptr);
  small.resize(40, 30);
  linux_adapter::GlDevice device(graphics.contexts->New(), graphics.contexts, small);
  device.SetTransform(platform::D3DTS_PROJECTION, d3dx8::MatrixIdentity());
  device.SetTransform(platform::D3DTS_VIEW, d3dx8::MatrixRotationZ(1));
  device.SetTransform(platform::D3DTS_WORLD, d3dx8::MatrixScaling(2, 4, 1));
  device.SetRenderState(platform::D3DRS_AMBIENT, 0x00FF0080);
  device.SetMaterial({{0.5F, 1, 1, 1}, {0.2F, 1, 0.2F, 0}, {1, 1, 1, 0}, {0, 0.1F, 0, 0}, 9});
  platform::D3DLIGHT8 light{};
  light.Type = platform::D3DLIGHT_DIRECTIONAL;
  light.Diffuse = {1, 1, 0, 0};
  light.Ambient = {0, 0.1F, 1, 0};
  light.Direction = {-3, 0, 0};
  device.SetLight(5, light);
  device.LightEnable(5, true);
  // The normal (1, 0.8, 0) becomes (1/2, 0.2, 0), not of length 1: half of the light
  const float vertices[] = {-9, -9,   0.5F, 1, 0.8F, 0,    0, 9,    0.5F,
                            1,  0.8F, 0,    9, -9,   0.5F, 1, 0.8F, 0};
  device.SetVertexShader(platform::D3DFVF_XYZ | platform::D3DFVF_NORMAL);
  device.DrawPrimitiveUP(platform::D3DPT_TRIANGLELIST, 1, vertices, 24);
  device.Present(nullptr, nullptr, 0, nullptr);
  Settle();
  const QRgb pixel = small.grab().toImage().pixel(20, 15);
  EXPECT_NEAR(qRed(pixel), 255 * (0.2 + 0.5 * 0.5), 1);
  EXPECT_NEAR(qGreen(pixel), 255 * (0.1 + 0.1 + 0.5), 1);
  EXPECT_NEAR(qBlue(pixel), 255 * 0.2 * (1 + 128 / 255.0), 1);
}

}  // namespace
}  // namespace quillorbit::view_tests
