#pragma once

#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_adapter {

/// The user-space driver is another program, which listens on the SOCK_SEQPACKET socket of the
/// device's name in the runtime folder. Only a driver of this user or of root is trusted.
///
/// Both throw std::runtime_error that says in plain words what was found at the socket's place and
/// what to do about it; neither waits for the driver.

/// Returns when there is a socket that may be trusted, whether or not anybody listens.
void FindUserDriver();
/// A connected socket that does not block. The driver serves one program and refuses a second.
[[nodiscard]] FileDescriptor ConnectToUserDriver();

}  // namespace quillorbit::linux_adapter
