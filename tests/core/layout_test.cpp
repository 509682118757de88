#include <gtest/gtest.h>
#include <map>

#include "core/program.h"

namespace quillorbit {
namespace {

using fakes::FakeLabel;

/// The window as designed, before anything has been filled in: its labels have their design widths.
struct LayoutTest : testing::Test {
  Program p;

  void ResizePanel(float fWidth) {
    auto& panel = p.platform.Get<fakes::FakePictureBox>("picSetup");
    panel.fWidth = fWidth;
    panel.Resize();
  }
  float Left(const std::string& s) { return p.platform.toolkit.registry.at(s)->Left(); }
  float Right(const std::string& s) { return Left(s) + p.platform.toolkit.registry.at(s)->Width(); }
};

TEST_F(LayoutTest, DesignedControls) {
  auto& window = p.platform.Window();
  EXPECT_EQ(window.Caption(), "Quillorbit");
  EXPECT_FALSE(window.bVisible);
  EXPECT_EQ(window.ScaleWidth(), 9510);
  EXPECT_EQ(window.ScaleHeight(), 6720);
  EXPECT_EQ(p.platform.tmrCheck2().iInterval, 1000);
  EXPECT_TRUE(p.platform.tmrCheck2().bEnabled);
  EXPECT_FALSE(p.platform.tmrCheck().bEnabled);

  // Every control has a tab index of its own, 0 to 38.
  std::map<int, std::string> byIndex;
  for (const auto& [sName, pControl] : p.platform.toolkit.registry) {
    const auto index = [](auto* control) { return control ? control->iTabIndex : -1; };
    byIndex[std::max({index(dynamic_cast<FakeLabel*>(pControl)),
                      index(dynamic_cast<fakes::FakePictureBox*>(pControl)),
                      index(dynamic_cast<fakes::FakeTextBox*>(pControl)),
                      index(dynamic_cast<fakes::FakeSlider*>(pControl)),
                      index(dynamic_cast<fakes::FakeCheckBox*>(pControl))})] = sName;
  }
  EXPECT_EQ(byIndex.size(), 39U);
  EXPECT_EQ(byIndex.begin()->second, "picSurface");
  EXPECT_EQ(byIndex[3], "lblButton0");
  EXPECT_EQ(byIndex[18], "lblButton15");
  EXPECT_EQ(byIndex[20], "txtServerPort");
  EXPECT_EQ(byIndex[22], "sldFilter");
  EXPECT_EQ(byIndex[23], "chkDebug");
  EXPECT_EQ(byIndex.rbegin()->first, 38);

  auto& lamp = p.platform.Get<FakeLabel>("lblButton15");
  EXPECT_EQ(lamp.fLeft, 1080 + 285 * 15);
  EXPECT_EQ(lamp.backColor, 0xFFU);
  EXPECT_EQ(lamp.sCaption, "00");
  EXPECT_EQ(p.platform.Caption("lblDXError"), "DirectX not detected");
  EXPECT_EQ(p.platform.Get<FakeLabel>("lblButtons").fTop, 4230);

  // Everything in the panel is centred on one line.
  for (const char* s : {"lblStatic0", "lblButton0", "lblStatic1", "lblStatic2"}) {
    auto& label = p.platform.Get<FakeLabel>(s);
    EXPECT_EQ(label.fTop + label.fHeight / 2, 187.5F) << s;
  }
}

TEST_F(LayoutTest, RowAsDesignedGivesTheSliderTheRest) {
  ResizePanel(9510);
  EXPECT_EQ(p.platform.Get<fakes::FakeSlider>("sldFilter").fWidth, 915);  // 9510 - 8475 - 120
  EXPECT_EQ(Left("lblStatic0"), 120);
  EXPECT_EQ(Left("lblButton0"), 840);
  EXPECT_EQ(Left("lblButton1"), 1125);
  EXPECT_EQ(Left("lblButton15"), 840 + 15 * 285);
  EXPECT_EQ(Left("lblStatic1"), Right("lblButton15") + 60);
  EXPECT_EQ(Left("txtServerPort"), Right("lblStatic1"));
  EXPECT_EQ(Left("lblStatic2"), Right("txtServerPort") + 60);
  EXPECT_EQ(Left("sldFilter"), Right("lblStatic2"));
  EXPECT_EQ(Left("chkDebug"), Right("sldFilter") + 60);
  EXPECT_EQ(Right("chkDebug"), 9510);

  ResizePanel(12345.5F);
  EXPECT_EQ(p.platform.Get<fakes::FakeSlider>("sldFilter").fWidth, 3750.5F);
  EXPECT_EQ(Left("lblStatic0"), 120);
  EXPECT_EQ(Right("chkDebug"), 12345.5F);
}

TEST_F(LayoutTest, TooNarrowAPanelKeepsTheSliderAndCentresTheRow) {
  ResizePanel(8000);  // asks for 8000 - 8475 - 120 < 0
  EXPECT_EQ(p.platform.Get<fakes::FakeSlider>("sldFilter").fWidth, 2865);
  EXPECT_EQ(Left("lblStatic0"), (8000 - (8475 + 2865 - 120)) / 2.0F);  // -1610
  EXPECT_EQ(Left("chkDebug"), Left("sldFilter") + 2865 + 60);
}

TEST_F(LayoutTest, OneRefusedMoveDoesNotStopTheRow) {
  p.Take();
  p.platform.log.FailAt(2);  // the first label's move, behind the slider's width
  ResizePanel(9510);
  EXPECT_EQ(p.Take().size(), 23U);
  EXPECT_EQ(Right("chkDebug"), 9510);
}

TEST_F(LayoutTest, SurfaceFillsWhatThePanelLeaves) {
  auto& window = p.platform.Window();
  p.Take();
  window.fScaleWidth = 15000;
  window.fScaleHeight = 9000;
  window.Resize();
  EXPECT_EQ(p.Take(), Lines{"picSurface.Move 0, 0, 15000, 8595"});
  window.fScaleHeight = 300;  // lower than the panel: refused, and passed over
  window.Resize();
  EXPECT_EQ(p.platform.Get<fakes::FakePictureBox>("picSurface").fHeight, 8595);
}

TEST_F(LayoutTest, MinimisingHides) {
  auto& window = p.platform.Window();
  window.Show();
  p.Take();
  window.eState = platform::WindowState::Minimized;
  window.Resize();
  EXPECT_EQ(p.Take(), Lines{"frmMain.Hide"});
}

}  // namespace
}  // namespace quillorbit
