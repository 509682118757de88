#pragma once

#include <functional>

namespace quillorbit::platform {

/// A fact that the platform reports. The receiver of the event assigns one handler; the adapter
/// calls it, on the user-interface thread, and calls nothing while no handler is assigned.
/// Handlers do not throw, and do not destroy the object whose event they handle.
template <class... Args>
using Event = std::function<void(Args...)>;

}  // namespace quillorbit::platform
