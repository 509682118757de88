#pragma once

#include <QTimer>

#include "platform/timer.h"

namespace quillorbit::linux_adapter {

/// A timer of a form, which stops when the form is destroyed.
class LinuxTimer final : public platform::Timer {
 public:
  LinuxTimer(const bool& bFormUnloaded, int iInterval, bool bEnabled) {
    m_timer.setTimerType(Qt::PreciseTimer);  // the coarse one is up to 5 % early
    m_timer.setInterval(iInterval);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this, &bFormUnloaded] {
      if (!bFormUnloaded && Tick) Tick();
    });
    Enabled(bEnabled);
  }

  void Interval(int iMilliseconds) override { m_timer.setInterval(iMilliseconds); }
  void Enabled(bool bEnabled) override {
    if (bEnabled == m_timer.isActive()) return;
    if (bEnabled)
      m_timer.start();
    else
      m_timer.stop();
  }

 private:
  QTimer m_timer;
};

}  // namespace quillorbit::linux_adapter
