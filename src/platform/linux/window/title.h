#pragma once

#include <string_view>

#include <QWidget>

namespace quillorbit::linux_adapter {

/// Sets a window's title literally. By itself the toolkit removes "[*]", its mark for unsaved
/// changes, and replaces an empty title by the program file's name.
void SetTitle(QWidget& window, std::string_view sTitle);

}  // namespace quillorbit::linux_adapter
