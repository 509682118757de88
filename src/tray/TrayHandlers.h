#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/toolkit.h"
#include "tray/frmSysTray.h"
#include "ui/Controls.h"
#include "view/AttitudeView.h"

namespace quillorbit {

/// What the tray does for the user: a left click on the icon, or a click on a balloon, brings the
/// main window back; the right button opens the menu, whose item ends the program.
class TrayHandlers {
 public:
  TrayHandlers(platform::Toolkit& toolkit, Controls& controls, AttitudeView& view,
               const std::unique_ptr<frmSysTray>& systray)
      : m_toolkit(toolkit), m_controls(controls), m_view(view), m_systray(systray) {}

  void m_systray_BalloonClicked();
  void m_systray_MenuClick(std::int32_t lIndex, const std::string& sKey);
  void m_systray_SysTrayMouseDown(SysTrayButton eButton);

 private:
  void RestoreMainWindow();

  platform::Toolkit& m_toolkit;
  Controls& m_controls;
  AttitudeView& m_view;
  const std::unique_ptr<frmSysTray>& m_systray;
};

}  // namespace quillorbit
