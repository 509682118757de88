#include "intake/Receiver.h"

#include <array>
#include <exception>
#include <limits>
#include <span>
#include <stdexcept>

#include "base/CarryOn.h"
#include "base/Existing.h"
#include "base/Numbers.h"

namespace quillorbit {

void Receiver::sckUDP_DataArrival() {
  const std::optional<MotionData> motion = ReadDatagram();
  if (!motion) return;

  const CarryOn step([this] { m_state.m_packetCount = 0; });
  step([&] { CountPacket(); });
  m_state.m_motion = *motion;

  bool bFiltered = false;
  step([&] { bFiltered = Existing(m_state.m_setup).Samples != 0; });
  if (bFiltered) {
    step([&] { Existing(m_state.m_filterX).AddLowPass(ToInt16(m_state.m_motion.x)); });
    step([&] { Existing(m_state.m_filterY).AddLowPass(ToInt16(m_state.m_motion.y)); });
    step([&] { SendFiltered(); });
    step([&] {
      if (Visible()) ShowFiltered();
    });
  } else {
    step([&] { SendRaw(); });
    step([&] {
      if (Visible()) ShowRaw();
    });
  }
  if (Visible()) {
    for (std::size_t i = 0; i < m_controls.lblButton.size(); ++i) step([&] { ShowButton(i); });
  }
  step([&] {
    if (m_state.m_disconnected) m_status.Disconnected(false);
  });
  step([&] { m_controls.tmrCheck->Enabled(false); });
  step([&] { m_controls.tmrCheck->Enabled(true); });
}

std::optional<MotionData> Receiver::ReadDatagram() {
  std::array<std::byte, MotionData::nBytes> bytes;
  try {
    if (m_controls.sckUDP->GetData(bytes) != bytes.size()) return {};
  } catch (const std::exception&) {
    return {};
  }
  return MotionData::FromBytes(bytes);
}

void Receiver::CountPacket() {
  if (m_state.m_packetCount == std::numeric_limits<std::int32_t>::max())
    throw std::overflow_error("Overflow");
  ++m_state.m_packetCount;
}

void Receiver::SendFiltered() {
  const MotionData& motion = m_state.m_motion;
  Existing(m_state.m_gamepad)
      .SendData(Existing(m_state.m_filterX).Value(), Existing(m_state.m_filterY).Value(), motion.z,
                motion.zr, motion.b);
}

void Receiver::SendRaw() {
  const MotionData& motion = m_state.m_motion;
  Existing(m_state.m_gamepad).SendData(motion.x, motion.y, motion.z, motion.zr, motion.b);
}

void Receiver::ShowFiltered() {
  m_view.UpdateDisplay(DisplayAngle(Existing(m_state.m_filterX).Value()),
                       DisplayAngle(Existing(m_state.m_filterY).Value()),
                       DisplayAngle(m_state.m_motion.z), DisplayAngle(m_state.m_motion.zr));
}

void Receiver::ShowRaw() {
  const MotionData& motion = m_state.m_motion;
  m_view.UpdateDisplay(DisplayAngle(motion.x), DisplayAngle(motion.y), DisplayAngle(motion.z),
                       DisplayAngle(motion.zr));
}

void Receiver::ShowButton(std::size_t lLamp) {
  const bool bPressed = (m_state.m_motion.b >> lLamp & 1) != 0;
  m_controls.lblButton[lLamp]->BackColor(bPressed ? lampPressed : lampReleased);
}

}  // namespace quillorbit
