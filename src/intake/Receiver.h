#pragma once

#include <optional>

#include "app/ConnectionStatus.h"
#include "intake/ReceiverState.h"
#include "ui/Controls.h"
#include "view/AttitudeView.h"

namespace quillorbit {

/// Handles each motion datagram: from the socket to the joystick, and to whatever shows it. Nothing
/// is allocated on the heap unless something fails.
class Receiver {
 public:
  Receiver(ReceiverState& state, Controls& controls, AttitudeView& view, ConnectionStatus& status)
      : m_state(state), m_controls(controls), m_view(view), m_status(status) {}

  /// One datagram is pending. Anything but 20 bytes is ignored, and so is a read that fails: it
  /// must not keep an old pose alive. When a step for an accepted one fails, the packet count
  /// becomes 0 and the next step runs.
  void sckUDP_DataArrival();

 private:
  [[nodiscard]] std::optional<MotionData> ReadDatagram();
  void CountPacket();
  void SendFiltered();
  void SendRaw();
  void ShowFiltered();
  void ShowRaw();
  void ShowButton(std::size_t lLamp);
  [[nodiscard]] bool Visible() const { return m_controls.frmMain->Visible(); }

  ReceiverState& m_state;
  Controls& m_controls;
  AttitudeView& m_view;
  ConnectionStatus& m_status;
};

}  // namespace quillorbit
