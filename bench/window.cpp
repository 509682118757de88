#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QThread>
#include <xcb/xcb.h>

#include "place.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr int nRounds = 7;

/// Sees the windows that come on the screen.
class Screen {
 public:
  Screen() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
    if (xcb_connection_has_error(m_connection.get())) throw std::runtime_error("no display");
    const xcb_window_t root =
        xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection.get(), root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_connection.get());
  }

  /// Waits until a window of a main window's size is mapped.
  void WaitForWindow(QProcess& process) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 20'000) {
      std::unique_ptr<xcb_generic_event_t, decltype(&free)> event(
          xcb_poll_for_event(m_connection.get()), &free);
      if (!event) {
        QThread::usleep(200);
        continue;
      }
      if ((event->response_type & 0x7F) != XCB_MAP_NOTIFY) continue;
      const auto window = reinterpret_cast<xcb_map_notify_event_t*>(event.get())->window;
      std::unique_ptr<xcb_get_geometry_reply_t, decltype(&free)> geometry(
          xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), window),
                                 nullptr),
          &free);
      if (!geometry || geometry->width <= 400) continue;
      m_xCentre = static_cast<std::int16_t>(geometry->x + geometry->width / 2);
      m_yCentre = static_cast<std::int16_t>(geometry->y + geometry->height / 2);
      return;
    }
    throw std::runtime_error(process.program().toStdString() + " shows no window");
  }

  /// Whether the window's centre is no longer as black as the screen behind it.
  [[nodiscard]] bool HasPicture() const {
    const xcb_window_t root =
        xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    const std::unique_ptr<xcb_get_image_reply_t, decltype(&free)> image(
        xcb_get_image_reply(m_connection.get(),
                            xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root,
                                          m_xCentre, m_yCentre, 1, 1, 0xFFFFFF),
                            nullptr),
        &free);
    const std::uint8_t* pPixel = image ? xcb_get_image_data(image.get()) : nullptr;
    return pPixel != nullptr && pPixel[0] + pPixel[1] + pPixel[2] != 0;
  }

  /// Forgets what was mapped so far.
  void Drain() {
    while (auto* pEvent = xcb_poll_for_event(m_connection.get())) free(pEvent);
  }

 private:
  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
  std::int16_t m_xCentre = 0, m_yCentre = 0;
};

/// Proportional set size in MiB: its own pages, and its share of those that others map too.
double ProportionalSize(qint64 nProcess) {
  QFile file("/proc/" + QString::number(nProcess) + "/smaps_rollup");
  if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("no smaps_rollup");
  for (const QByteArray& line : file.readAll().split('\n'))
    if (line.startsWith("Pss:")) return line.mid(4).trimmed().split(' ')[0].toDouble() / 1024;
  throw std::runtime_error("no Pss in smaps_rollup");
}

struct Start {
  double dWindow, dPicture;  ///< milliseconds until the window, and its first picture
  double dMebibytes;
};

Start Measure(Screen& screen, const Place& place, const QString& sProgram) {
  screen.Drain();
  QProcess process;
  place.Prepare(process);
  QElapsedTimer clock;
  clock.start();
  process.start(sProgram, QStringList());
  const auto elapsed = [&] { return static_cast<double>(clock.nsecsElapsed()) / 1e6; };
  screen.WaitForWindow(process);
  const double dWindow = elapsed();
  while (!screen.HasPicture()) {
    if (elapsed() > 20'000) throw std::runtime_error(sProgram.toStdString() + " shows no picture");
    QThread::usleep(200);
  }
  const double dPicture = elapsed();
  QThread::sleep(1);
  const double dMebibytes = ProportionalSize(process.processId());
  End(process);
  return {dWindow, dPicture, dMebibytes};
}

double Median(const std::vector<Start>& starts, double Start::*field) {
  std::vector<double> values;
  for (const Start& start : starts) values.push_back(start.*field);
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

void Window() {
  Place text(Place::View::Text), model(Place::View::Model);
  QProcess textDriver, modelDriver;
  text.StartDriver(textDriver);
  model.StartDriver(modelDriver);

  Screen screen;
  std::vector<Start> empty, withText, withModel;
  for (int i = 0; i < nRounds; ++i) {
    empty.push_back(Measure(screen, text, Place::Built("bench_empty_widgets")));
    withText.push_back(Measure(screen, text, text.Program()));
    withModel.push_back(Measure(screen, model, model.Program()));
  }
  End(textDriver);
  End(modelDriver);

  std::printf(
      "\nStart to the window on the screen and to its first picture, and memory one second later,\n"
      "median of %d rounds in turn\n",
      nRounds);
  std::printf("  %-28s %10s %10s %10s %16s %8s %8s\n", "", "window ms", "picture", "MiB (PSS)",
              "ratio: window", "picture", "MiB");
  const double dEmptyWindow = Median(empty, &Start::dWindow);
  const double dEmptyPicture = Median(empty, &Start::dPicture);
  const double dEmptySize = Median(empty, &Start::dMebibytes);
  const auto print = [&](const char* sName, const std::vector<Start>& starts) {
    const double dWindow = Median(starts, &Start::dWindow);
    const double dPicture = Median(starts, &Start::dPicture);
    const double dSize = Median(starts, &Start::dMebibytes);
    std::printf("  %-28s %10.1f %10.1f %10.1f %16.2f %8.2f %8.2f\n", sName, dWindow, dPicture,
                dSize, dWindow / dEmptyWindow, dPicture / dEmptyPicture, dSize / dEmptySize);
  };
  print("empty Qt Widgets program", empty);
  print("quillorbit, no model: text", withText);
  print("quillorbit, 3D view", withModel);
}

}  // namespace quillorbit::bench
