#pragma once

#include "fakes/call_log.h"
#include "platform/timer.h"

namespace quillorbit::fakes {

struct FakeTimer : Fake<Timer> {
  FakeTimer(CallLog& l, View name, int interval, bool enabled)
      : Fake(l, name), iInterval(interval), bEnabled(enabled) {}
  void Interval(int i) override { Set(__func__, iInterval, i); }
  void Enabled(bool b) override { Set(__func__, bEnabled, b); }

  /// The interval has passed.
  void Elapse() {
    if (bEnabled && Tick) Tick();
  }

  int iInterval;
  bool bEnabled;
};

}  // namespace quillorbit::fakes
