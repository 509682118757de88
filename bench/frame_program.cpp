// bench_frame: the whole program on the screen, with a joystick that does nothing. Prints what one
// frame of the 3D view costs, beside showing a finished picture of that size.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include <QApplication>
#include <QThread>

#include "app/frmMain.h"
#include "fakes/platform.h"
#include "platform/linux/graphics/dx8vb.h"
#include "platform/linux/process/process.h"
#include "platform/linux/window/drawing_surface.h"
#include "platform/linux/window/fonts.h"
#include "platform/linux/window/toolkit.h"

namespace quillorbit::bench {
namespace {

constexpr int nFrames = 300;

double CpuMillisecondsNow() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

struct Cost {
  std::vector<double> wall, cpu;  // milliseconds of each
  void Add(const std::function<void()>& draw) {
    const double dCpu = CpuMillisecondsNow();
    const auto start = std::chrono::steady_clock::now();
    draw();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    wall.push_back(time.count());
    cpu.push_back(CpuMillisecondsNow() - dCpu);
  }
};

double Quantile(std::vector<double> values, double dPart) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(dPart * static_cast<double>(values.size() - 1))];
}

/// As long as the display needs for the frame before, with the events that come meanwhile.
void Pause() {
  for (int i = 0; i < 4; ++i) {
    QThread::msleep(5);
    QApplication::processEvents();
  }
}

void Print(const char* sName, const Cost& cost) {
  std::printf("  %-38s %10.2f %8.2f %12.2f\n", sName, Quantile(cost.wall, 0.5),
              Quantile(cost.wall, 0.99), Quantile(cost.cpu, 0.5));
}

int Run(int argc, char** argv) {
  using namespace linux_adapter;
  const auto contexts = std::make_shared<GlContexts>();
  fakes::FakePlatform fake;
  LinuxProcess process(argc, argv);
  LinuxResources resources;
  LinuxToolkit toolkit(argc, argv, resources);
  LinuxFonts fonts([] { return qApp->devicePixelRatio(); });
  presentation::DrawingThreads threads([] {}, &std::abort);
  LinuxDX8VB dx8vb(fonts, contexts, threads);
  platform::Platform platform{toolkit,       fake.shell, fake.windows, fake.udpSockets,
                              fake.device,   fake.xml,   process,      fake.resources,
                              fake.codePage, fonts,      dx8vb};
  frmMain main(platform);
  main.Form_Load();
  fake.log.Mute(true);
  DrawingSurface* pSurface = nullptr;
  for (QWidget* pWidget : QApplication::allWidgets())
    if (pWidget->objectName() == "picSurface") pSurface = dynamic_cast<DrawingSurface*>(pWidget);
  if (pSurface == nullptr || !pSurface->isVisible()) {
    std::fprintf(stderr, "bench_frame: there is no 3D view here\n");
    return 1;
  }

  Cost frame;
  for (std::int32_t i = 0; i < nFrames + 20; ++i) {
    Pause();
    if (i == 20) frame = {};  // what came before has warmed up
    frame.Add([&] { fake.Arrive({.x = i % 151, .y = i * 3 % 151, .z = 75, .zr = 75, .b = 0}); });
  }
  std::printf("\nOne frame of %d x %d pixels on the screen, %d in turn\n", pSurface->width(),
              pSurface->height(), nFrames);
  std::printf("  %-38s %10s %8s %12s\n", "", "median ms", "p99", "CPU ms");
  Print("datagram to frame, 3D view", frame);
  return 0;
}

}  // namespace
}  // namespace quillorbit::bench

int main(int argc, char** argv) { return quillorbit::bench::Run(argc, argv); }
