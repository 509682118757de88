#include "tray/TrayHandlers.h"

#include "base/Existing.h"

namespace quillorbit {

void TrayHandlers::m_systray_BalloonClicked() { RestoreMainWindow(); }

/// Any item ends the program, from inside the menu's own loop.
void TrayHandlers::m_systray_MenuClick(std::int32_t /*lIndex*/, const std::string& /*sKey*/) {
  m_controls.frmMain->Unload();
  m_toolkit.End();
}

void TrayHandlers::m_systray_SysTrayMouseDown(SysTrayButton eButton) {
  if (eButton == SysTrayButton::Right)
    Existing(m_systray).ShowMenu();
  else
    RestoreMainWindow();
}

void TrayHandlers::RestoreMainWindow() {
  m_controls.frmMain->WindowState(platform::WindowState::Normal);
  m_controls.frmMain->Show();
  m_view.UpdateDisplay(0, 0, 0, 0);
}

}  // namespace quillorbit
