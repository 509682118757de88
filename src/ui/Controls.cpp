#include "ui/Controls.h"

#include <string>

#include "base/FormClass.h"

namespace quillorbit {
namespace {

using platform::LabelKind;

constexpr platform::Font fontWindow = {"Verdana", 8.25F};
constexpr platform::Font fontPanel = {"MS Sans Serif", 8.25F};
constexpr platform::Font fontReadout = {"Verdana", 14.25F};

/// One row of the text display, as designed: each label shows its own name until it is filled.
class ReadoutRows {
 public:
  explicit ReadoutRows(platform::Container& window) : m_window(window) {}

  std::unique_ptr<platform::Label> Caption(std::string_view sName, float fTop) {
    return New(sName, 75, fTop, 2640);
  }
  std::unique_ptr<platform::Label> Value(std::string_view sName, float fTop) {
    return New(sName, 2775, fTop, 1200);
  }

 private:
  std::unique_ptr<platform::Label> New(std::string_view sName, float fLeft, float fTop,
                                       float fWidth) {
    return m_window.NewLabel({sName, fLeft, fTop, fWidth, 345, m_iTabIndex++, fontReadout},
                             LabelKind::Text, sName);
  }

  platform::Container& m_window;
  int m_iTabIndex = 25;
};

}  // namespace

Controls::Controls(platform::Platform& platform) {
  frmMain = platform.toolkit.NewForm(
      {"frmMain", sFormClass, "Quillorbit", "AAA", 9510, 6720, fontWindow});

  picSurface = frmMain->NewPictureBox({"picSurface", 0, 0, 9510, 6315, 0, fontPanel},
                                      platform::Docking::Top);
  picSetup = frmMain->NewPictureBox({"picSetup", 0, 6315, 9510, 405, 1, fontPanel},
                                    platform::Docking::Bottom);

  lblStatic[0] = picSetup->NewLabel({"lblStatic0", 300, 90, 720, 195, 2, fontPanel},
                                    LabelKind::Text, "Buttons:");
  for (std::size_t i = 0; i < lblButton.size(); ++i) {
    const std::string sName = "lblButton" + std::to_string(i);
    lblButton[i] = picSetup->NewLabel({sName, 1080 + 285 * static_cast<float>(i), 60, 255, 255,
                                       3 + static_cast<int>(i), fontPanel},
                                      LabelKind::Lamp, "00");
    lblButton[i]->BackColor(lampPressed);
  }
  lblStatic[1] = picSetup->NewLabel({"lblStatic1", 5670, 90, 420, 195, 19, fontPanel},
                                    LabelKind::Text, "Port:");
  txtServerPort =
      picSetup->NewTextBox({"txtServerPort", 6120, 45, 945, 285, 20, fontPanel}, "5000");
  lblStatic[2] = picSetup->NewLabel({"lblStatic2", 7110, 90, 945, 195, 21, fontPanel},
                                    LabelKind::Text, "Sensibility:");
  sldFilter = picSetup->NewSlider({"sldFilter", 8040, 75, 2865, 225, 22, fontPanel});
  chkDebug = picSetup->NewCheckBox({"chkDebug", 11010, 75, 735, 225, 23, fontPanel}, "OSD");

  lblDXError = frmMain->NewLabel({"lblDXError", 75, 1110, 2940, 345, 24, fontReadout},
                                 LabelKind::Text, "DirectX not detected");
  ReadoutRows rows(*frmMain);
  lblFilterLabel = rows.Caption("lblFilterLabel", 1740);
  lblFilter = rows.Value("lblFilter", 1740);
  lblPacketLabel = rows.Caption("lblPacketLabel", 2160);
  lblPacket = rows.Value("lblPacket", 2160);
  lblXLabel = rows.Caption("lblXLabel", 2565);
  lblX = rows.Value("lblX", 2565);
  lblYLabel = rows.Caption("lblYLabel", 2985);
  lblY = rows.Value("lblY", 2985);
  lblZLabel = rows.Caption("lblZLabel", 3405);
  lblZ = rows.Value("lblZ", 3405);
  lblZrLabel = rows.Caption("lblZrLabel", 3810);
  lblZr = rows.Value("lblZr", 3810);
  lblButtonsLabel = rows.Caption("lblButtonsLabel", 4230);
  lblButtons = rows.Value("lblButtons", 4230);

  tmrCheck = frmMain->NewTimer(0, false);
  tmrCheck2 = frmMain->NewTimer(1000, true);
  sckUDP = platform.udpSockets.NewUdpSocket();
}

}  // namespace quillorbit
