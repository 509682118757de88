#include "platform/linux/window/title.h"

#include "platform/linux/desktop/x11.h"
#include "platform/linux/window/units.h"

namespace quillorbit::linux_adapter {

void SetTitle(QWidget& window, std::string_view sTitle) {
  window.setWindowTitle(ToQString(sTitle).replace("[*]", "[*][*]"));  // doubled, it is shown once
  if (sTitle.empty()) x11::ClearTitle(static_cast<xcb_window_t>(window.winId()));
}

}  // namespace quillorbit::linux_adapter
