#pragma once

#include <cstdint>

#include "intake/ReceiverState.h"
#include "platform/toolkit.h"
#include "ui/Controls.h"

namespace quillorbit {

/// The rate of both axis filters; their freq is the setting `Samples`.
inline constexpr double dFilterRate = 30;

/// The three setup controls. Each writes its setting into the settings object and saves the
/// profile at once; the port box also binds the socket again, and the slider tunes both filters.
/// When the save fails, the port box beeps and the others do nothing; the new value holds for this
/// run.
class SetupControls {
 public:
  SetupControls(ReceiverState& state, Controls& controls, platform::Toolkit& toolkit)
      : m_state(state), m_controls(controls), m_toolkit(toolkit) {}

  void txtServerPort_KeyPress(std::int16_t KeyAscii);
  void txtServerPort_Validate(bool& Cancel);
  void sldFilter_Change();
  void chkDebug_Click();

 private:
  void ListenOn(const std::string& sPort);
  void RestorePort();

  ReceiverState& m_state;
  Controls& m_controls;
  platform::Toolkit& m_toolkit;
};

}  // namespace quillorbit
