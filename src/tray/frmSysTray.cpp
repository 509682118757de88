#include "tray/frmSysTray.h"

namespace quillorbit {

std::int32_t frmSysTray::AddMenuItem(std::string_view /*sCaption*/, std::string_view /*sKey*/,
                                     bool /*bDefault*/) {
  return 0;
}

void frmSysTray::ToolTip(std::string_view /*sTip*/) {}

void frmSysTray::IconHandle(std::uint32_t /*hIcon*/) {}

void frmSysTray::ShowBalloonTip(std::string_view /*sMessage*/, std::string_view /*sTitle*/,
                                std::int32_t /*eIcon*/, std::int32_t /*lTimeOutMs*/) {}

}  // namespace quillorbit
