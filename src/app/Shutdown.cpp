// The end of the program: the main window's unloading.

#include <string>
#include <utility>

#include "app/Product.h"
#include "app/frmMain.h"
#include "base/CarryOn.h"
#include "base/Existing.h"
#include "settings/Messages.h"

namespace quillorbit {

void frmMain::Form_QueryUnload(bool& Cancel, platform::UnloadReason UnloadMode) {
  if (UnloadMode != platform::UnloadReason::ControlMenu) return;
  const std::string sQuit(Existing(m_state.m_setup).Msg(Message::Quit));
  const auto eAnswer =
      m_platform.toolkit.MsgBox(sQuit + " " + std::string(sProductName) + "?",
                                platform::MB_YESNO | platform::MB_ICONQUESTION, sProductName);
  if (eAnswer != platform::IDNO) return;
  Cancel = true;
  m_controls.frmMain->Hide();
}

/// Copes with anything that start-up has not created yet. The settings need no saving: each change
/// was saved when it was made.
void frmMain::Form_Unload() {
  m_unloaded = true;
  const CarryOn step(Ignore{});
  step([&] { m_controls.sckUDP->Close(); });
  step([&] { Existing(m_systray).Unload(); });
  m_unloadedSystray = std::move(m_systray);
  step([&] { m_state.m_setup.reset(); });
  step([&] { m_state.m_gamepad.reset(); });
  step([&] { m_state.m_filterX.reset(); });
  step([&] { m_state.m_filterY.reset(); });
  step([&] { m_view.ReleaseD3D(); });
}

}  // namespace quillorbit
