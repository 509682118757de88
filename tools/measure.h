#pragma once

#include "tools/latency.h"
#include "tools/send_options.h"
#include "tools/stop_signal.h"

namespace quillorbit::tools {

/// Takes the driver's place, sends numbered datagrams and times their reports. Throws when the
/// program does not come, does not answer or leaves before the end, or when a stop is asked for
/// before the first numbered datagram; later a stop ends the sending, and
/// another one the waiting for what is still under way.
[[nodiscard]] LatencyLog Measure(const SendOptions& options, StopSignal& stop);

}  // namespace quillorbit::tools
