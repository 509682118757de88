#pragma once

#include "fakes/call_log.h"
#include "platform/timer.h"

namespace quillorbit::fakes {

struct FakeTimer : FakeObject<Timer> {
  FakeTimer(CallLog& l, View name, int interval, bool enabled)
      : FakeObject(l, name), iInterval(interval), bEnabled(enabled) {}
  void Interval(int i) override { Set("Interval", iInterval, i); }
  void Enabled(bool b) override { Set("Enabled", bEnabled, b); }

  /// The interval has passed.
  void Elapse() {
    if (bEnabled && Tick) Tick();
  }

  int iInterval;
  bool bEnabled;
};

}  // namespace quillorbit::fakes
