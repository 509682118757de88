#pragma once

#include <memory>

#include "app/ConnectionStatus.h"
#include "intake/Receiver.h"
#include "intake/ReceiverState.h"
#include "platform/platform.h"
#include "tray/TrayHandlers.h"
#include "tray/frmSysTray.h"
#include "ui/Controls.h"
#include "ui/SetupControls.h"
#include "view/AttitudeView.h"
#include "winutil/IEnumWindowsSink.h"
#include "winutil/mWindow.h"

namespace quillorbit {

/// The main window, which is the program: loading it starts the program, unloading it ends it. It
/// owns every part and the state that they share, and routes each event to its handler in the part
/// concerned.
class frmMain : private IEnumWindowsSink {
 public:
  explicit frmMain(platform::Platform& platform);

  /// The start of the program (Startup.cpp). Afterwards the window is shown, or unloaded when the
  /// program cannot or need not run.
  void Form_Load();

 private:
  void ConnectEvents();
  void ConnectTrayEvents();

  // The steps of Form_Load
  void YieldToPreviousInstance();
  void SetApplicationIcon();
  void CreateSettings();
  void LoadProfile();
  void OpenJoystick();
  void CreateTray();
  void AddQuitToTrayMenu();
  void SetFirstToolTip();
  void SetFirstTrayIcon();
  void AssumeSignal();
  void FillPortBox();
  void FillSlider();
  void FillLamps();
  void FillCheckBox();
  void FillPanelLabels();
  void CreateFilters();
  void TuneFilterX();
  void TuneFilterY();
  void SizeWindow();
  void StartView();
  void ShowFirstView();
  void StartWatchdog();
  void CreateMutexes();
  void StartListening();
  void ShowWindow();
  void ShowFailureBox();

  // The end of the program (Shutdown.cpp)
  void Form_QueryUnload(bool& Cancel, platform::UnloadReason UnloadMode);
  void Form_Unload();

  void EnumWindow(platform::WindowHandle hwnd, bool& bStop) override;
  [[nodiscard]] std::int32_t Identifier() override;

  platform::Platform& m_platform;
  ReceiverState m_state;
  Controls m_controls;
  mWindow m_windows;
  std::unique_ptr<frmSysTray> m_systray;
  std::unique_ptr<frmSysTray> m_unloadedSystray;  ///< its menu may still be about to return
  AttitudeView m_view;
  ConnectionStatus m_status;
  TrayHandlers m_trayHandlers;
  SetupControls m_setupControls;
  Receiver m_receiver;
  bool m_unloaded = false;
};

}  // namespace quillorbit
