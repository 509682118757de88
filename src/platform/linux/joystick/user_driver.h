#pragma once

#include <memory>

#include "platform/linux/joystick/joystick.h"

namespace quillorbit::linux_adapter {

/// The user-space driver: another program that listens on the SOCK_SEQPACKET socket of the device's
/// name in the runtime folder. Each control is one packet: the code as 32 bits, least significant
/// byte first, then the input. Only a driver of this user or of root is trusted.
///
/// Both throw std::runtime_error that says in plain words what was found at the socket's place and
/// what to do about it; neither waits for the driver.

/// Returns when there is a socket that may be trusted, whether or not anybody listens.
void FindUserDriver();
/// Connects. The driver serves one program and refuses a second.
[[nodiscard]] std::unique_ptr<Joystick> OpenUserDriver();

}  // namespace quillorbit::linux_adapter
