#pragma once

namespace quillorbit::linux_adapter {

/// Ends the process with this exit status. What the standard streams hold is written; destructors
/// and exit handlers do not run. For when a thread that cannot be ended, as in a driver that hangs,
/// would make them wait, or would use what they take away.
[[noreturn]] void EndAtOnce(int nStatus);

}  // namespace quillorbit::linux_adapter
