#pragma once

#include "platform/event.h"

namespace quillorbit::platform {

/// A window timer. It ticks every Interval milliseconds while it is enabled, never twice for one
/// interval; ticks that could not be delivered in time are lost.
class Timer {
 public:
  virtual ~Timer() = default;

  virtual void Interval(int iMilliseconds) = 0;
  /// Enabling a disabled timer starts a new interval.
  virtual void Enabled(bool bEnabled) = 0;

  Event<> Tick;
};

}  // namespace quillorbit::platform
