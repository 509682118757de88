#pragma once

#include <cstdint>
#include <memory>

#include "filter/CFilter.h"
#include "intake/MotionData.h"
#include "joystick/CGamePad.h"
#include "settings/CSetup.h"

namespace quillorbit {

/// What the main window knows about the mobile device and shares with its parts. Start-up fills it
/// and shutdown releases it; an event that comes during either may find members unset.
struct ReceiverState {
  std::unique_ptr<CSetup> m_setup;
  std::unique_ptr<CGamePad> m_gamepad;
  MotionData m_motion;  ///< the last accepted datagram
  std::unique_ptr<CFilter> m_filterX;
  std::unique_ptr<CFilter> m_filterY;
  std::int32_t m_packetCount = 0;      ///< accepted datagrams since start or since the last failure
  std::int32_t m_lastPacketCount = 0;  ///< the count at the last tick of the rate timer
  std::int32_t m_packetRate = 0;       ///< accepted datagrams per second
  bool m_disconnected = false;
  bool m_dxAvailable = false;  ///< whether the 3D view could be started
};

}  // namespace quillorbit
