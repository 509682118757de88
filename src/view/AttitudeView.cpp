#include "view/AttitudeView.h"

#include "base/Existing.h"
#include "view/Readouts.h"

namespace quillorbit {

bool AttitudeView::InitD3D() { return false; }

void AttitudeView::UpdateDisplay(float /*ax*/, float /*ay*/, float /*az*/, float /*azr*/) {
  ShowReadouts();
}

void AttitudeView::ReleaseD3D() {}

void AttitudeView::Form_Paint() {
  if (m_state.m_disconnected) UpdateDisplay(0, 0, 0, 0);
}

void AttitudeView::ShowReadouts() {
  const MotionData& motion = m_state.m_motion;
  m_controls.lblFilter->Caption(ShortText() << Existing(m_state.m_setup).Samples);
  m_controls.lblPacket->Caption(PacketText(m_state.m_packetCount, m_state.m_packetRate));
  m_controls.lblX->Caption(FilteredAxisText(motion.x, Existing(m_state.m_filterX).Value()));
  m_controls.lblY->Caption(FilteredAxisText(motion.y, Existing(m_state.m_filterY).Value()));
  m_controls.lblZ->Caption(ShortText() << motion.z);
  m_controls.lblZr->Caption(ShortText() << motion.zr);
  m_controls.lblButtons->Caption(ShortText() << motion.b);
}

}  // namespace quillorbit
