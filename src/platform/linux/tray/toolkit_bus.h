#pragma once

#include <string>

namespace quillorbit::linux_adapter {

/// Keeps the toolkit away from the session bus, whose answers it would wait for in many places, and
/// returns the bus's address for those who do not wait; empty when there is none. To be called
/// before the toolkit's application object exists.
///
/// The toolkit is given the address of the screen readers' bus instead, if one of them is in use
/// and their bus answers. Finding out takes a tenth of a second at most.
[[nodiscard]] std::string KeepSessionBusFromToolkit();

/// Has the toolkit use the screen readers' bus that it was given, if any. To be called before its
/// event loop runs.
void ServeScreenReaders();

}  // namespace quillorbit::linux_adapter
