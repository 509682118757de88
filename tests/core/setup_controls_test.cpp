#include <gtest/gtest.h>
#include <limits>

#include "core/program.h"

namespace quillorbit {
namespace {

struct SetupControlsTest : testing::Test {
  SetupControlsTest() { p.Start(); }

  Program p;
  fakes::FakeTextBox& txtServerPort = p.platform.Get<fakes::FakeTextBox>("txtServerPort");

  const Lines save = {"xml.loadXML the stylesheet", "xml.transformNode",
                      "xml.loadXML transformed 1", "xml.save C:\\Games\\Quillorbit.setup"};
  Lines With(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
  }
  Lines Restored(const std::string& sPort) {
    return {"txtServerPort.Text = " + sPort, "txtServerPort.SelStart = 0",
            "txtServerPort.SelLength = " + std::to_string(sPort.size()), "Beep"};
  }
};

TEST_F(SetupControlsTest, GoodPortIsBoundAndSaved) {
  EXPECT_TRUE(txtServerPort.Leave("6000"));
  EXPECT_EQ(p.Take(), With({"sckUDP.Close", "sckUDP.Protocol = 1", "sckUDP.Bind 6000"}, save));
  EXPECT_EQ(p.platform.StoredElement("port"), "6000");

  // Numbers in other clothes mean what they read as.
  const std::pair<const char*, std::int32_t> others[] = {
      {"1e3", 1000}, {"5000.5", 5000}, {" 7000 ", 7000}, {"+65535", 65535}};
  for (const auto& [sText, lPort] : others) {
    EXPECT_TRUE(txtServerPort.Leave(sText)) << sText;
    EXPECT_EQ(p.platform.Socket().lBound, lPort);
    EXPECT_EQ(p.platform.StoredElement("port"), std::to_string(lPort));
  }
}

TEST_F(SetupControlsTest, EnterBindsWithoutLeavingAndOtherKeysDoNothing) {
  txtServerPort.sText = "6000";
  txtServerPort.KeyPress('6');
  EXPECT_EQ(p.Take(), Lines{});
  txtServerPort.KeyPress(13);
  EXPECT_EQ(p.platform.Socket().lBound, 6000);
  txtServerPort.sText = "abc";
  p.Take();
  txtServerPort.KeyPress(13);
  EXPECT_EQ(p.Take(), Restored("6000"));
}

TEST_F(SetupControlsTest, TextThatIsNoNumberLeavesTheSocketAlone) {
  for (const char* sText : {"abc", "", " ", "50 00", "5000x", "0x10"}) {
    EXPECT_FALSE(txtServerPort.Leave(sText)) << sText;
    EXPECT_EQ(p.Take(), Restored("5000"));
    EXPECT_EQ(p.platform.Socket().lBound, 5000);
  }
  EXPECT_TRUE(p.platform.xml.store.files.empty());
}

TEST_F(SetupControlsTest, RefusedPortClosesTheSocketUntilTheNextValidation) {
  p.platform.udpSockets.heldPorts = {6000};
  for (const char* sText : {"6000", "0", "65536", "-1", "1e10", "1e999"}) {
    EXPECT_FALSE(txtServerPort.Leave(sText)) << sText;
    EXPECT_EQ(p.platform.Socket().lBound, 0);
    EXPECT_EQ(txtServerPort.sText, "5000");
  }
  EXPECT_TRUE(p.platform.xml.store.files.empty());
  EXPECT_TRUE(txtServerPort.Leave(txtServerPort.sText));
  EXPECT_EQ(p.platform.Socket().lBound, 5000);
}

TEST_F(SetupControlsTest, PortThatCannotBeSavedStaysInForce) {
  p.platform.log.FailAt(7);  // xml.save
  EXPECT_FALSE(txtServerPort.Leave("6000"));
  EXPECT_EQ(p.platform.Socket().lBound, 6000);
  EXPECT_EQ(txtServerPort.sText, "6000");
}

TEST_F(SetupControlsTest, SliderTunesBothFiltersAndSaves) {
  auto& sldFilter = p.platform.Get<fakes::FakeSlider>("sldFilter");
  p.Hide();
  sldFilter.Slide(10);
  EXPECT_EQ(p.Take(), save);
  EXPECT_EQ(p.platform.StoredElement("samples"), "10");
  p.platform.Arrive({.x = 40, .y = 80, .z = 0, .zr = 0, .b = 0});
  EXPECT_EQ(p.Take().at(0), Report("0A 00 14 00 00 00 00 00 00 00 00 00"));  // a quarter

  p.platform.log.FailAt(4);  // xml.save
  sldFilter.Slide(30);
  p.Take();
  p.platform.Arrive({.x = 40, .y = 80, .z = 0, .zr = 0, .b = 0});
  EXPECT_EQ(p.Take().at(0), Report("19 00 32 00 00 00 00 00 00 00 00 00"));  // half of the rest
}

TEST_F(SetupControlsTest, CheckBoxSwitchesTheStatisticsAndSaves) {
  auto& chkDebug = p.platform.Get<fakes::FakeCheckBox>("chkDebug");
  EXPECT_EQ(chkDebug.sCaption, "OSD");
  chkDebug.Tick(1);
  EXPECT_EQ(p.Take(), save);
  EXPECT_EQ(p.platform.StoredElement("debug"), "1");
  chkDebug.Tick(0);
  EXPECT_EQ(p.platform.StoredElement("debug"), "0");
  p.Take();
  p.platform.log.FailAt(4);
  chkDebug.Tick(1);  // cannot be saved, and is passed over
  EXPECT_EQ(p.Take(), (Lines{"xml.loadXML the stylesheet", "xml.transformNode",
                             "xml.loadXML transformed 3", "xml.save C:\\Games\\Quillorbit.setup"}));
}

}  // namespace
}  // namespace quillorbit
