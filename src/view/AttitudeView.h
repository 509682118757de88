#pragma once

#include "intake/ReceiverState.h"
#include "ui/Controls.h"

namespace quillorbit {

/// The view of the mobile device's attitude, drawn on request. There is no 3D view yet, so it is
/// always the text display: the current values as text behind the hidden drawing surface.
class AttitudeView {
 public:
  AttitudeView(ReceiverState& state, Controls& controls) : m_state(state), m_controls(controls) {}

  /// Sets the 3D view up; false when it cannot be had.
  [[nodiscard]] bool InitD3D();
  /// Draws one frame, or refreshes the text display. The display angles are in degrees; the text
  /// display shows the values themselves.
  void UpdateDisplay(float ax, float ay, float az, float azr);
  void ReleaseD3D();

  /// A window that has to be painted while no datagram comes to redraw it.
  void Form_Paint();

 private:
  void ShowReadouts();

  ReceiverState& m_state;
  Controls& m_controls;
};

}  // namespace quillorbit
