#pragma once

#include <functional>

namespace quillorbit::platform {

/// Something that the platform reports. The core assigns at most one handler; the adapter calls it,
/// if there is one, on the user-interface thread.
/// Handlers do not throw, and do not destroy the object whose event they handle.
template <class... Args>
using Event = std::function<void(Args...)>;

}  // namespace quillorbit::platform
