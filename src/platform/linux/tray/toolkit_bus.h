#pragma once

#include <string>

namespace quillorbit::linux_adapter {

/// Keeps the toolkit away from the session bus, whose answers it would wait for in many places, and
/// returns the bus's address for those who do not wait; empty when there is none. To be called
/// before the toolkit's application object exists.
///
/// The toolkit serves screen readers all the same, where they are in use and their bus answers: it
/// is given the address of that bus. To find out takes a tenth of a second at most.
[[nodiscard]] std::string KeepSessionBusFromToolkit();

}  // namespace quillorbit::linux_adapter
