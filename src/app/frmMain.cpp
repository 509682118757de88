#include "app/frmMain.h"

#include <exception>

#include "base/Trace.h"
#include "ui/Layout.h"

namespace quillorbit {
namespace {

/// An event handler: the object's named operation. A failure that it does not handle ends there;
/// the program goes on.
template <class Object, class... Args>
auto On(Object& object, void (Object::*handler)(Args...)) {
  return [&object, handler](Args... args) {
    try {
      (object.*handler)(args...);
    } catch (const std::exception& failure) {
      Trace(failure.what());
    }
  };
}

/// Likewise for a rule that works on the window's controls.
auto On(Controls& controls, void (*handler)(Controls&)) {
  return [&controls, handler] { handler(controls); };
}

}  // namespace

frmMain::frmMain(platform::Platform& platform)
    : m_platform(platform),
      m_controls(platform),
      m_windows(platform.windows, platform.codePage),
      m_view(platform, m_state, m_controls),
      m_status(platform, m_state, m_controls, m_view, m_systray),
      m_trayHandlers(platform.toolkit, m_controls, m_view, m_systray),
      m_setupControls(m_state, m_controls, platform.toolkit),
      m_receiver(m_state, m_controls, m_view, m_status) {
  ConnectEvents();
}

void frmMain::ConnectEvents() {
  Controls& c = m_controls;
  c.frmMain->QueryUnload = On(*this, &frmMain::Form_QueryUnload);
  c.frmMain->Unloaded = On(*this, &frmMain::Form_Unload);
  c.frmMain->Resize = On(c, &Form_Resize);
  c.frmMain->Paint = On(m_view, &AttitudeView::Form_Paint);
  c.picSetup->Resize = On(c, &picSetup_Resize);
  c.txtServerPort->KeyPress = On(m_setupControls, &SetupControls::txtServerPort_KeyPress);
  c.txtServerPort->Validate = On(m_setupControls, &SetupControls::txtServerPort_Validate);
  c.sldFilter->Change = On(m_setupControls, &SetupControls::sldFilter_Change);
  c.chkDebug->Click = On(m_setupControls, &SetupControls::chkDebug_Click);
  c.sckUDP->DataArrival = On(m_receiver, &Receiver::sckUDP_DataArrival);
  c.tmrCheck->Tick = On(m_status, &ConnectionStatus::tmrCheck_Timer);
  c.tmrCheck2->Tick = On(m_status, &ConnectionStatus::tmrCheck2_Timer);
}

void frmMain::ConnectTrayEvents() {
  frmSysTray& tray = *m_systray;
  tray.BalloonClicked = On(m_trayHandlers, &TrayHandlers::m_systray_BalloonClicked);
  tray.MenuClick = On(m_trayHandlers, &TrayHandlers::m_systray_MenuClick);
  tray.SysTrayMouseDown = On(m_trayHandlers, &TrayHandlers::m_systray_SysTrayMouseDown);
}

}  // namespace quillorbit
