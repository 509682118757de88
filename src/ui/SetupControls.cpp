#include "ui/SetupControls.h"

#include <exception>
#include <string>

#include "base/CarryOn.h"
#include "base/Existing.h"
#include "base/Numbers.h"

namespace quillorbit {

void SetupControls::txtServerPort_KeyPress(std::int16_t KeyAscii) {
  constexpr std::int16_t iEnter = 13;
  if (KeyAscii != iEnter) return;
  bool bIgnored = false;
  txtServerPort_Validate(bIgnored);
}

void SetupControls::txtServerPort_Validate(bool& Cancel) {
  const std::string sPort = m_controls.txtServerPort->Text();
  try {
    if (IsNumeric(sPort)) {
      ListenOn(sPort);
      return;
    }
  } catch (const std::exception&) {
  }
  RestorePort();
  Cancel = true;
}

/// The socket decides which ports are valid. It is closed first, so after a port that it rejects it
/// stays closed until the box is validated again.
void SetupControls::ListenOn(const std::string& sPort) {
  m_controls.sckUDP->Close();
  m_controls.sckUDP->Protocol(platform::SocketProtocol::UDP);
  const std::int32_t lPort = RoundToInt32(ReadNumber(sPort));
  m_controls.sckUDP->Bind(lPort);
  Existing(m_state.m_setup).Port = lPort;
  m_state.m_setup->Save();
}

void SetupControls::RestorePort() {
  const std::string sPort = Decimal(Existing(m_state.m_setup).Port);
  m_controls.txtServerPort->Text(sPort);
  m_controls.txtServerPort->SelStart(0);
  m_controls.txtServerPort->SelLength(static_cast<int>(sPort.size()));
  m_toolkit.Beep();
}

void SetupControls::sldFilter_Change() {
  // Start-up gives the slider its range and value before there are filters: nothing to do then.
  if (!m_state.m_filterX) return;
  CSetup& setup = Existing(m_state.m_setup);
  setup.Samples = m_controls.sldFilter->Value();
  const CarryOn step(Ignore{});
  step([&] { setup.Save(); });
  step([&] { m_state.m_filterX->InitialiseLowPass(dFilterRate, setup.Samples); });
  step([&] { Existing(m_state.m_filterY).InitialiseLowPass(dFilterRate, setup.Samples); });
}

void SetupControls::chkDebug_Click() {
  CSetup& setup = Existing(m_state.m_setup);
  setup.DebugMode = m_controls.chkDebug->Value() == 1;
  const CarryOn step(Ignore{});
  step([&] { setup.Save(); });
}

}  // namespace quillorbit
