#pragma once

#include <string_view>

#include <QWidget>

namespace quillorbit::linux_adapter {

/// Gives a window its title as it stands. On its own the toolkit takes "[*]" out, its mark for
/// unsaved changes, and shows the program file's name for an empty title.
void SetTitle(QWidget& window, std::string_view sTitle);

}  // namespace quillorbit::linux_adapter
