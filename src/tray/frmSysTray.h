#pragma once

#include <cstdint>
#include <string_view>

namespace quillorbit {

/// The icon in the notification area, with its tip, balloons and menu. It does nothing yet: the
/// program runs without an icon.
class frmSysTray {
 public:
  /// Adds an item to the icon's menu and returns its index. An "&" marks the caption's access key.
  std::int32_t AddMenuItem(std::string_view sCaption, std::string_view sKey = {},
                           bool bDefault = false);
  void ToolTip(std::string_view sTip);
  void IconHandle(std::uint32_t hIcon);
  /// `eIcon`: 0 none, 1 information, 2 warning, 3 error.
  void ShowBalloonTip(std::string_view sMessage, std::string_view sTitle, std::int32_t eIcon,
                      std::int32_t lTimeOutMs);
};

}  // namespace quillorbit
