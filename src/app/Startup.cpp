// The start of the program: the main window's loading.

#include <array>
#include <string>

#include "app/Product.h"
#include "app/frmMain.h"
#include "base/CarryOn.h"
#include "base/Existing.h"
#include "base/FormClass.h"
#include "base/Numbers.h"
#include "settings/Messages.h"
#include "winutil/modWin32.h"

namespace quillorbit {
namespace {

constexpr int iWatchdogInterval = 1000;       // milliseconds
constexpr float fWindowWidth = 804 * 15.0F;   // pixels, in twips
constexpr float fWindowHeight = 467 * 15.0F;  // likewise
constexpr std::string_view sKeepDesignedSize = "video";

}  // namespace

void frmMain::Form_Load() {
  // Whatever step fails, the user is told and the next step runs. A step that unloads the window is
  // the last.
  const CarryOn carryOn([this] { ShowFailureBox(); });
  const auto step = [&](void (frmMain::*what)()) {
    if (!m_unloaded) carryOn([&] { (this->*what)(); });
  };

  step(&frmMain::YieldToPreviousInstance);  // before anything exists that both would want
  step(&frmMain::SetApplicationIcon);
  step(&frmMain::CreateSettings);
  step(&frmMain::LoadProfile);
  step(&frmMain::OpenJoystick);  // without it the program is of no use, and ends
  step(&frmMain::CreateTray);
  step(&frmMain::AddQuitToTrayMenu);
  step(&frmMain::SetFirstToolTip);
  step(&frmMain::SetFirstTrayIcon);
  step(&frmMain::AssumeSignal);
  step(&frmMain::FillPortBox);
  step(&frmMain::FillSlider);  // before the filters exist, so that it tunes and saves nothing
  step(&frmMain::FillLamps);
  step(&frmMain::FillCheckBox);
  step(&frmMain::FillPanelLabels);
  step(&frmMain::CreateFilters);
  step(&frmMain::TuneFilterX);
  step(&frmMain::TuneFilterY);
  step(&frmMain::SizeWindow);
  step(&frmMain::StartView);
  step(&frmMain::ShowFirstView);
  step(&frmMain::StartWatchdog);
  step(&frmMain::CreateMutexes);
  step(&frmMain::StartListening);  // last: now everything exists that a datagram reaches
  step(&frmMain::ShowWindow);
}

void frmMain::YieldToPreviousInstance() {
  if (!m_platform.process.PrevInstance()) return;
  m_controls.frmMain->Caption("");  // so that the search does not find this window
  m_windows.EnumerateWindows(*this);
  m_controls.frmMain->Unload();
}

/// Brings the previous instance's main window, hidden or not, to the front.
void frmMain::EnumWindow(platform::WindowHandle hwnd, bool& bStop) {
  if (m_windows.GetWindowClass(hwnd) != sFormClass) return;
  if (m_windows.GetWindowTitle(hwnd).find(sProductName) == std::string::npos) return;
  m_windows.ActivateWindow(hwnd);
  bStop = true;
}

std::int32_t frmMain::Identifier() { return static_cast<std::int32_t>(m_controls.frmMain->hWnd()); }

void frmMain::SetApplicationIcon() {
  SetWindowIcon(m_platform, m_controls.frmMain->hWnd(), "AAA", true);
}

void frmMain::CreateSettings() {
  m_state.m_setup =
      std::make_unique<CSetup>(m_platform.process, m_platform.resources, m_platform.xml);
}

void frmMain::LoadProfile() { Existing(m_state.m_setup).Load(); }

void frmMain::OpenJoystick() {
  m_state.m_gamepad = std::make_unique<CGamePad>(m_platform.device);
  if (m_state.m_gamepad->IsOpen()) return;
  const CSetup& setup = Existing(m_state.m_setup);
  const std::string sText = std::string(setup.Msg(Message::DeviceNotOpen)) + "\r\n" +
                            std::string(setup.Msg(Message::ProgramWillExit));
  m_platform.toolkit.MsgBox(sText, platform::MB_ICONINFORMATION,
                            setup.Msg(Message::DeviceNotOpenTitle));
  m_controls.frmMain->Unload();
  m_platform.toolkit.End();
}

void frmMain::CreateTray() {
  m_systray = std::make_unique<frmSysTray>(m_platform);
  ConnectTrayEvents();
}

void frmMain::AddQuitToTrayMenu() {
  const std::string sQuit(Existing(m_state.m_setup).Msg(Message::Quit));
  Existing(m_systray).AddMenuItem("&" + sQuit);
}

void frmMain::SetFirstToolTip() { Existing(m_systray).ToolTip(sProductName); }

void frmMain::SetFirstTrayIcon() { m_status.SetTrayIcon("OK"); }

void frmMain::AssumeSignal() { m_state.m_disconnected = false; }  // without its balloon

void frmMain::FillPortBox() {
  m_controls.txtServerPort->Text(Decimal(Existing(m_state.m_setup).Port));
}

void frmMain::FillSlider() {
  m_controls.sldFilter->Min(1);
  m_controls.sldFilter->Max(30);
  m_controls.sldFilter->Value(Existing(m_state.m_setup).Samples);
}

void frmMain::FillLamps() {
  for (std::size_t i = 0; i < m_controls.lblButton.size(); ++i) {
    const std::size_t lNumber = i + 1;
    m_controls.lblButton[i]->Caption((lNumber < 10 ? "0" : "") + std::to_string(lNumber));
    m_controls.lblButton[i]->BackColor(lampReleased);
  }
}

void frmMain::FillCheckBox() {
  m_controls.chkDebug->Value(Existing(m_state.m_setup).DebugMode ? 1 : 0);
}

void frmMain::FillPanelLabels() {
  m_controls.lblStatic[1]->Caption(Existing(m_state.m_setup).Msg(Message::Port));
  m_controls.lblStatic[2]->Caption(m_state.m_setup->Msg(Message::Sensibility));
}

void frmMain::CreateFilters() {
  m_state.m_filterX = std::make_unique<CFilter>();
  m_state.m_filterY = std::make_unique<CFilter>();
}

void frmMain::TuneFilterX() {
  Existing(m_state.m_filterX).InitialiseLowPass(dFilterRate, Existing(m_state.m_setup).Samples);
}

void frmMain::TuneFilterY() {
  Existing(m_state.m_filterY).InitialiseLowPass(dFilterRate, Existing(m_state.m_setup).Samples);
}

void frmMain::SizeWindow() {
  if (m_platform.process.Command() == sKeepDesignedSize) return;
  m_controls.frmMain->Width(fWindowWidth);
  m_controls.frmMain->Height(fWindowHeight);
}

void frmMain::StartView() { m_state.m_dxAvailable = m_view.InitD3D(); }

void frmMain::ShowFirstView() {
  Controls& c = m_controls;
  if (m_state.m_dxAvailable) {
    c.frmMain->Show();
  } else {
    c.picSurface->Visible(false);
    const CSetup& setup = Existing(m_state.m_setup);
    c.lblFilterLabel->Caption(setup.Msg(Message::Filter));
    c.lblPacketLabel->Caption(setup.Msg(Message::PacketsReceived));
    c.lblXLabel->Caption("X:");
    c.lblYLabel->Caption("Y:");
    c.lblZLabel->Caption("Z:");
    c.lblZrLabel->Caption("Zr:");
    c.lblButtonsLabel->Caption(setup.Msg(Message::Buttons));
  }
  m_view.UpdateDisplay(0, 0, 0, 0);
}

void frmMain::StartWatchdog() {
  m_controls.tmrCheck->Interval(iWatchdogInterval);
  m_controls.tmrCheck->Enabled(true);
}

void frmMain::CreateMutexes() { CreateAppMutex(m_platform.process, "QuillorbitMutex"); }

void frmMain::StartListening() {
  m_controls.sckUDP->Protocol(platform::SocketProtocol::UDP);
  m_controls.sckUDP->Bind(Existing(m_state.m_setup).Port);
}

void frmMain::ShowWindow() {
  // The 3D view shows it earlier. Shown again, it would take the focus from what has it by now.
  if (!m_controls.frmMain->Visible()) m_controls.frmMain->Show();
}

/// The box names the port whichever step failed. Without a settings object it shows the defaults.
void frmMain::ShowFailureBox() {
  const CarryOn step(Ignore{});
  step([&] {
    std::unique_ptr<CSetup> defaults;
    if (!m_state.m_setup)
      defaults = std::make_unique<CSetup>(m_platform.process, m_platform.resources, m_platform.xml);
    const CSetup& setup = defaults ? *defaults : *m_state.m_setup;
    m_platform.toolkit.MsgBox(
        std::string(setup.Msg(Message::CouldNotListen)) + " " + Decimal(setup.Port),
        platform::MB_ICONINFORMATION, setup.Msg(Message::CouldNotListenTitle));
  });
}

}  // namespace quillorbit
