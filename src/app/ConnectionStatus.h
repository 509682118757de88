#pragma once

#include <memory>

#include "intake/ReceiverState.h"
#include "platform/platform.h"
#include "tray/frmSysTray.h"
#include "ui/Controls.h"
#include "view/AttitudeView.h"

namespace quillorbit {

/// Shows the user whether a mobile device is transmitting (signal or no signal, kept in
/// `m_disconnected`), and centres the joystick when none is. The watchdog declares the signal lost
/// after one second without an accepted datagram; the next one declares it back.
class ConnectionStatus {
 public:
  /// The tray component may be absent.
  ConnectionStatus(platform::Platform& platform, ReceiverState& state, Controls& controls,
                   AttitudeView& view, const std::unique_ptr<frmSysTray>& systray)
      : m_platform(platform),
        m_state(state),
        m_controls(controls),
        m_view(view),
        m_systray(systray) {}

  /// Changes to no signal (true) or signal (false), whatever the state is: icon, caption, tooltip
  /// and balloon, and for no signal a centred joystick without a pressed button. When a part of it
  /// fails, the others are carried out all the same; then the first failure is thrown.
  void Disconnected(bool bDisconnected);

  /// Shows an icon resource in the tray and on the main window.
  void SetTrayIcon(const char* sIconName);

  void tmrCheck_Timer();   ///< one second without an accepted datagram
  void tmrCheck2_Timer();  ///< every second: counts the datagrams per second

 private:
  void SignalLost();
  void SignalBack();

  platform::Platform& m_platform;
  ReceiverState& m_state;
  Controls& m_controls;
  AttitudeView& m_view;
  const std::unique_ptr<frmSysTray>& m_systray;
};

}  // namespace quillorbit
