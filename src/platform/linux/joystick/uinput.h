#pragma once

#include <filesystem>
#include <memory>

#include "platform/linux/joystick/joystick.h"

namespace quillorbit::linux_adapter {

/// The kernel's own virtual joystick, made through /dev/uinput: "Quillorbit", four axes of 0..150
/// that rest at 75, and 32 buttons. It takes joystick reports and nothing else.
///
/// Both throw std::runtime_error that says in plain words what was found at the node and what to do
/// about it.

/// Returns when there is a device node, whether or not it may be opened.
void FindUinput(const std::filesystem::path& node);
/// Makes the joystick, which exists until it is closed; only one at a time for each user.
[[nodiscard]] std::unique_ptr<Joystick> OpenUinput(const std::filesystem::path& node);

}  // namespace quillorbit::linux_adapter
