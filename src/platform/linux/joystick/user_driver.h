#pragma once

#include <memory>

#include "platform/linux/joystick/joystick.h"

namespace quillorbit::linux_adapter {

/// Connects to the user-space driver (user_driver_socket.h has the errors). Each control is one
/// packet: the code as 32 bits, least significant byte first, then the input.
///
/// While the driver's queue is full or the driver is gone, controls are lost, except for the newest
/// report: it is sent as soon as the driver has room or is back, and at the latest when the device
/// is closed, behind what is queued. Only a driver that is gone by then misses it. No report is
/// ever sent after a newer one. A driver that went away is looked for until it is back; the
/// standard error says both. Needs the toolkit's event loop in the thread that uses it.
[[nodiscard]] std::unique_ptr<Joystick> OpenUserDriver();

}  // namespace quillorbit::linux_adapter
