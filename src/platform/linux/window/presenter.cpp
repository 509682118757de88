#include "platform/linux/window/presenter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace quillorbit::linux_adapter {

/// Keeps the display's rate: the first change after a pause is presented as soon as the pending
/// events have been handled, the next ones a display period apart.
class Presenter final : public QObject {
 public:
  /// Lives as long as the application, whose event loop its timer needs.
  static Presenter* Instance() {
    static QPointer<Presenter> presenter;
    if (presenter.isNull()) presenter = new Presenter;
    return presenter;
  }

  void Add(Presented& presented) {
    if (std::exchange(presented.m_bRequested, true)) return;
    m_waiting.push_back(&presented);
    if (m_timer.isActive()) return;
    const qint64 since = m_last.isValid() ? m_last.elapsed() : nPeriod;
    m_timer.start(static_cast<int>(std::max<qint64>(0, nPeriod - since)));
  }

  void Remove(Presented& presented) { std::erase(m_waiting, &presented); }

 private:
  static constexpr qint64 nPeriod = 16;  // milliseconds, of a display of 60 Hz

  Presenter() : QObject(qApp) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { PresentAll(); });
  }

  void PresentAll() {
    m_last.start();
    for (Presented* pPresented : m_waiting) {
      pPresented->m_bRequested = false;
      pPresented->Present();
    }
    m_waiting.clear();
  }

  QTimer m_timer;
  QElapsedTimer m_last;
  std::vector<Presented*> m_waiting;
};

Presented::~Presented() {
  if (m_bRequested) Presenter::Instance()->Remove(*this);
}

void Presented::RequestPresentation() { Presenter::Instance()->Add(*this); }

}  // namespace quillorbit::linux_adapter
