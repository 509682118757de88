#pragma once

#include <array>
#include <memory>

#include "platform/platform.h"

namespace quillorbit {

inline constexpr platform::Colour lampPressed = 0x0000FF;   // red
inline constexpr platform::Colour lampReleased = 0xFFFFFF;  // white

/// The main window and everything on it, as designed. The members are created in this order and
/// destroyed in reverse. What the controls do is elsewhere.
struct Controls {
  explicit Controls(platform::Platform& platform);

  std::unique_ptr<platform::Form> frmMain;

  // The docked children
  std::unique_ptr<platform::PictureBox> picSurface;
  std::unique_ptr<platform::PictureBox> picSetup;

  // On the setup panel
  std::array<std::unique_ptr<platform::Label>, 3> lblStatic;
  std::array<std::unique_ptr<platform::Label>, 16> lblButton;  ///< lamp i shows button i + 1
  std::unique_ptr<platform::TextBox> txtServerPort;
  std::unique_ptr<platform::Slider> sldFilter;
  std::unique_ptr<platform::CheckBox> chkDebug;

  // The text display behind the drawing surface
  std::unique_ptr<platform::Label> lblDXError;
  std::unique_ptr<platform::Label> lblFilterLabel, lblFilter;
  std::unique_ptr<platform::Label> lblPacketLabel, lblPacket;
  std::unique_ptr<platform::Label> lblXLabel, lblX;
  std::unique_ptr<platform::Label> lblYLabel, lblY;
  std::unique_ptr<platform::Label> lblZLabel, lblZ;
  std::unique_ptr<platform::Label> lblZrLabel, lblZr;
  std::unique_ptr<platform::Label> lblButtonsLabel, lblButtons;

  // Invisible
  std::unique_ptr<platform::Timer> tmrCheck;   ///< the loss-of-signal watchdog
  std::unique_ptr<platform::Timer> tmrCheck2;  ///< the rate timer
  std::unique_ptr<platform::UdpSocket> sckUDP;
};

}  // namespace quillorbit
