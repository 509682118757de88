// Frames and the text display. The 3D view's setup is in ViewSetup.cpp.

#include "view/AttitudeView.h"

#include <exception>

#include "base/Existing.h"
#include "base/Trace.h"
#include "settings/Messages.h"
#include "view/Camera.h"
#include "view/Readouts.h"

namespace quillorbit {
namespace {

constexpr float fRadiansPerDegree = 0.017453292F;  // pi / 180
constexpr float fModelScale = 4;

constexpr platform::D3DCOLOR backgroundColour = 0x00000000;
constexpr platform::D3DCOLOR overlayColour = 0xFFFFCC00;
constexpr std::int32_t lOverlayTop = 20, lOverlayRight = 280, lLineHeight = 20;  // pixels

}  // namespace

void AttitudeView::UpdateDisplay(float ax, float ay, float az, float azr) {
  if (m_state.m_dxAvailable)
    Render(ax, ay, az, azr);
  else
    ShowReadouts();
}

void AttitudeView::Form_Paint() {
  if (m_state.m_disconnected) UpdateDisplay(0, 0, 0, 0);
}

void AttitudeView::ReleaseD3D() {
  m_device.reset();
  m_d3d.reset();
  m_dx.reset();
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

/// One frame. A failure ends it; the next request starts a new one.
void AttitudeView::Render(float ax, float ay, float az, float azr) {
  try {
    if (!HasDevice()) return;
    TurnModel(ax, ay);
    PlaceCamera(az, azr);
    SwitchLights();
    DrawScene();
  } catch (const std::exception& failure) {
    Trace(failure.what());
  }
}

/// Whether this frame can go on; creates the device if there is none. A device that waits to be
/// reset is released: this frame then fails at its first call, and the next creates another.
bool AttitudeView::HasDevice() {
  if (!m_device) {
    if (InitD3D()) return true;
    Trace("Could not recover");
    return false;
  }
  if (m_device->TestCooperativeLevel() == platform::D3DERR_DEVICENOTRESET) {
    m_controls.frmMain->Hide();
    ReleaseD3D();
    Trace("D3DERR_DEVICENOTRESET");
  }
  return true;
}

/// About the horizontal axis by Y, then about the line of sight by X.
void AttitudeView::TurnModel(float ax, float ay) {
  platform::DX8VB& dx = m_platform.dx8vb;
  platform::D3DMATRIX step;
  dx.D3DXMatrixIdentity(m_matWorld);
  dx.D3DXMatrixRotationX(step, ay * fRadiansPerDegree);
  dx.D3DXMatrixMultiply(m_matWorld, m_matWorld, step);
  dx.D3DXMatrixRotationZ(step, ax * fRadiansPerDegree);
  dx.D3DXMatrixMultiply(m_matWorld, m_matWorld, step);
  dx.D3DXMatrixScaling(step, fModelScale, fModelScale, fModelScale);
  dx.D3DXMatrixMultiply(m_matWorld, m_matWorld, step);
  Existing(m_device).SetTransform(platform::D3DTS_WORLD, m_matWorld);
}

void AttitudeView::PlaceCamera(float az, float azr) {
  LookAtModel(m_platform.dx8vb, m_matView, az, azr);
  Existing(m_device).SetTransform(platform::D3DTS_VIEW, m_matView);
}

void AttitudeView::SwitchLights() {
  platform::IDirect3DDevice8& device = Existing(m_device);
  for (std::uint32_t i = 0; i < m_lights.size(); ++i) device.LightEnable(i, false);
  const std::uint32_t iFirst = m_state.m_disconnected ? 2 : 0;  // red pair or white pair
  device.LightEnable(iFirst, true);
  device.LightEnable(iFirst + 1, true);
}

void AttitudeView::DrawScene() {
  platform::IDirect3DDevice8& device = Existing(m_device);
  device.Clear(0, nullptr, platform::D3DCLEAR_TARGET, backgroundColour, 1.0F, 0);
  device.BeginScene();
  for (std::size_t i = 0; i < m_materials.size(); ++i) {
    device.SetMaterial(m_materials[i]);
    device.SetTexture(0, m_textures[i]);
    Existing(m_mesh).DrawSubset(static_cast<std::uint32_t>(i));
  }
  if (Existing(m_state.m_setup).DebugMode) DrawOverlay();
  device.EndScene();
  device.Present(nullptr, nullptr, 0, nullptr);
}

void AttitudeView::DrawOverlay() {
  const CSetup& setup = Existing(m_state.m_setup);
  const MotionData& motion = m_state.m_motion;
  const auto line = [&](std::string_view sPrefix, std::string_view sValue) {
    DrawOverlayLine(m_overlayLine.assign(sPrefix).append(sValue));
  };
  m_textRect.top = lOverlayTop;
  m_textRect.bottom = lOverlayTop + lLineHeight;
  m_textRect.right = lOverlayRight;
  line(setup.Msg(Message::Filter), ShortText() << setup.Samples);
  line(setup.Msg(Message::PacketsReceived),
       PacketText(m_state.m_packetCount, m_state.m_packetRate));
  line("X:", FilteredAxisText(motion.x, Existing(m_state.m_filterX).Value()));
  line("Y:", FilteredAxisText(motion.y, Existing(m_state.m_filterY).Value()));
  line("Z:", ShortText() << motion.z);
  line("Zr:", ShortText() << motion.zr);
  line(setup.Msg(Message::Buttons), ShortText() << motion.b);
}

void AttitudeView::DrawOverlayLine(std::string_view sText) {
  Existing(m_d3dx).DrawText(m_font, overlayColour, sText, m_textRect, 0);
  m_textRect.top += lLineHeight;
  m_textRect.bottom += lLineHeight;
}

}  // namespace quillorbit
