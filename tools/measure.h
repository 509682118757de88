#pragma once

#include "tools/latency.h"
#include "tools/send_options.h"
#include "tools/stop_signal.h"

namespace quillorbit::tools {

/// Takes the driver's place, sends numbered datagrams and times their reports. Throws when the
/// program does not connect, does not answer or disconnects before the end, or when a stop is
/// requested before the first numbered datagram. Later a stop ends the sending, and another one the
/// wait for the reports that are still missing.
[[nodiscard]] LatencyLog Measure(const SendOptions& options, StopSignal& stop);

}  // namespace quillorbit::tools
