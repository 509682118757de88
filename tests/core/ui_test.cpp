// The window's layout and the setup panel, on the whole program.

#include "core/program.h"

namespace quillorbit {
namespace {

/// The window as designed, before anything has been filled in: its labels have their design widths.
struct LayoutTest : testing::Test {
  float Left(const std::string& s) { return p.toolkit.registry.byName.at(s)->Left(); }
  float Right(const std::string& s) { return Left(s) + p.toolkit.registry.byName.at(s)->Width(); }
  void ResizePanel(float fWidth) {
    auto& panel = p.Get<fakes::FakePictureBox>("picSetup");
    panel.fWidth = fWidth;
    panel.Resize();
  }
  Program p;
  fakes::FakeSlider& slider = p.Get<fakes::FakeSlider>("sldFilter");
};

TEST_F(LayoutTest, SliderTakesTheWidthThatTheRowLeaves) {
  ResizePanel(9510);
  EXPECT_EQ(slider.fWidth, 915);  // 9510 - 8475 - 120
  float fRight = 120;             // where the control before ends, with the gap behind it
  const auto expectNext = [&](const std::string& sName, float fGap) {
    EXPECT_EQ(Left(sName), fRight) << sName;
    fRight = Right(sName) + fGap;
  };
  expectNext("lblStatic0", 0);
  for (int i = 0; i < 16; ++i) expectNext("lblButton" + std::to_string(i), i == 15 ? 60 : 30);
  expectNext("lblStatic1", 0);
  expectNext("txtServerPort", 60);
  expectNext("lblStatic2", 0);
  expectNext("sldFilter", 60);
  expectNext("chkDebug", 0);
  EXPECT_EQ(fRight, 9510);

  // Too narrow: the slider refuses a negative width, and the row is centred.
  ResizePanel(8000);
  EXPECT_EQ(slider.fWidth, 915);
  EXPECT_EQ(Left("lblStatic0"), (8000 - (8475 + 915 - 120)) / 2.0F);
}

TEST_F(LayoutTest, SurfaceFillsWhatThePanelLeavesAndMinimisingHides) {
  auto& window = p.Window();
  window.fScaleWidth = 15000;
  window.fScaleHeight = 9000;
  window.Resize();
  EXPECT_EQ(p.Take(), Lines{"picSurface.Move 0, 0, 15000, 8595"});
  window.eState = platform::WindowState::Minimized;
  window.Resize();
  EXPECT_EQ(p.Take(), Lines{"frmMain.Hide"});
}

struct PanelTest : testing::Test {
  PanelTest() { p.Start(); }
  Program p;
  fakes::FakeTextBox& txtServerPort = p.Get<fakes::FakeTextBox>("txtServerPort");
  const Lines save = {"xml.loadXML the stylesheet", "xml.transformNode",
                      "xml.loadXML transformed 1", "xml.save C:\\Games\\Quillorbit.setup"};
};

TEST_F(PanelTest, GoodPortIsBoundAndSaved) {
  txtServerPort.sText = "6000";
  txtServerPort.KeyPress('0');
  EXPECT_EQ(p.Take(), Lines{});
  txtServerPort.KeyPress(13);  // Enter
  EXPECT_EQ(p.Take(), Lines({"sckUDP.Close", "sckUDP.Protocol 1", "sckUDP.Bind 6000"}) + save);
  EXPECT_TRUE(txtServerPort.Leave(" 7000.5 "));
  EXPECT_EQ(p.StoredElement("port"), "7000");

  p.Take();
  p.log.FailAt(7);  // xml.save
  EXPECT_FALSE(txtServerPort.Leave("8000"));
  EXPECT_EQ(p.Take().back(), "Beep");
}

TEST_F(PanelTest, TextThatIsNoNumberLeavesTheSocketAlone) {
  for (const char* sText : {"", " ", "abc", "50 00", "5000x", "1e", ".", "1.2.3"}) {
    EXPECT_FALSE(txtServerPort.Leave(sText)) << sText;
    EXPECT_EQ(p.Take(), Calls("txtServerPort.Text 5000; txtServerPort.SelStart 0; "
                              "txtServerPort.SelLength 4; Beep"));
  }
}

TEST_F(PanelTest, SliderTunesBothFiltersAndSaves) {
  auto& sldFilter = p.Get<fakes::FakeSlider>("sldFilter");
  p.Hide();
  sldFilter.Slide(10);
  EXPECT_EQ(p.Take(), save);
  EXPECT_EQ(p.StoredElement("samples"), "10");
  p.Arrive({.x = 40, .y = 80});
  EXPECT_EQ(p.Take().at(0), Report("0A 00 14 00 00 00 00 00 00 00 00 00"));  // a quarter
  p.log.FailAt(4);                                                           // xml.save
  sldFilter.Slide(30);
  p.Take();
  p.Arrive({.x = 40, .y = 80});
  EXPECT_EQ(p.Take().at(0), Report("19 00 32 00 00 00 00 00 00 00 00 00"));  // half of the rest
}

}  // namespace
}  // namespace quillorbit
