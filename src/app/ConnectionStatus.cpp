#include "app/ConnectionStatus.h"

#include <cstdlib>
#include <exception>
#include <string>

#include "app/Product.h"
#include "base/CarryOn.h"
#include "base/Existing.h"
#include "settings/Messages.h"
#include "winutil/modWin32.h"

namespace quillorbit {
namespace {

constexpr std::int32_t balloonInformation = 1;
constexpr std::int32_t balloonWarning = 2;

}  // namespace

void ConnectionStatus::Disconnected(bool bDisconnected) {
  if (bDisconnected)
    SignalLost();
  else
    SignalBack();
}

void ConnectionStatus::SignalLost() {
  std::exception_ptr failure;
  const CarryOn step(KeepFirst{failure});
  std::string sCaption;
  step([&] { SetTrayIcon("ERROR"); });
  step([&] {
    const std::string_view sNoSignal = Existing(m_state.m_setup).Msg(Message::NoSignal);
    sCaption = std::string(sProductName) + " - " + std::string(sNoSignal);
    Existing(m_systray).ShowBalloonTip(sNoSignal, sProductName, balloonWarning, 0);
  });
  step([&] { m_controls.frmMain->Caption(sCaption); });
  step([&] { Existing(m_systray).ToolTip(sCaption); });
  step([&] {
    Existing(m_state.m_gamepad).SendData(lAxisCentre, lAxisCentre, lAxisCentre, lAxisCentre, 0);
  });
  for (const auto& lamp : m_controls.lblButton) step([&] { lamp->BackColor(lampReleased); });
  m_state.m_lastPacketCount = 0;
  m_state.m_disconnected = true;
  if (failure) std::rethrow_exception(failure);
}

void ConnectionStatus::SignalBack() {
  std::exception_ptr failure;
  const CarryOn step(KeepFirst{failure});
  step([&] { SetTrayIcon("OK"); });
  step([&] { m_controls.frmMain->Caption(sProductName); });
  step([&] { Existing(m_systray).ToolTip(sProductName); });
  step([&] {
    Existing(m_systray).ShowBalloonTip(Existing(m_state.m_setup).Msg(Message::Transmitting),
                                       sProductName, balloonInformation, 0);
  });
  m_state.m_disconnected = false;
  if (failure) std::rethrow_exception(failure);
}

void ConnectionStatus::SetTrayIcon(const char* sIconName) {
  const platform::IconHandle hSmallIcon =
      SetWindowIcon(m_platform, m_controls.frmMain->hWnd(), sIconName, false);
  Existing(m_systray).IconHandle(hSmallIcon);
}

void ConnectionStatus::tmrCheck_Timer() {
  const CarryOn step(Ignore{});
  step([&] {
    if (!m_state.m_disconnected) Disconnected(true);
  });
  m_view.UpdateDisplay(0, 0, 0, 0);
}

void ConnectionStatus::tmrCheck2_Timer() {
  // The count starts again from 0 after a failure in the receiver, hence the absolute value. The
  // first tick after start and after a loss of signal has no earlier count to compare with.
  const std::int32_t lLast = m_state.m_lastPacketCount;
  m_state.m_packetRate = lLast == 0 ? 0 : std::abs(m_state.m_packetCount - lLast);
  m_state.m_lastPacketCount = m_state.m_packetCount;
}

}  // namespace quillorbit
