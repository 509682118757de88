#pragma once

#include <string>

#include "fakes/call_log.h"
#include "platform/timer.h"

namespace quillorbit::fakes {

class FakeTimer : public platform::Timer {
 public:
  FakeTimer(CallLog& log, std::string name, int interval, bool enabled)
      : m_log(log), sName(std::move(name)), iInterval(interval), bEnabled(enabled) {}
  void Interval(int i) override {
    m_log.Call(sName, ".Interval = ", i);
    iInterval = i;
  }
  void Enabled(bool b) override {
    m_log.Call(sName, ".Enabled = ", b);
    bEnabled = b;
  }

  /// The interval has passed.
  void Elapse() {
    if (bEnabled && Tick) Tick();
  }

 private:
  CallLog& m_log;

 public:
  const std::string sName;
  int iInterval;
  bool bEnabled;
};

}  // namespace quillorbit::fakes
