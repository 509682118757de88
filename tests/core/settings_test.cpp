#include "core/program.h"
#include "settings/CSetup.h"

namespace quillorbit {
namespace {

struct SettingsTest : testing::Test {
  fakes::FakePlatform platform;
  CSetup setup{platform.process, platform.resources, platform.xml};
};

TEST_F(SettingsTest, SaveWritesEverythingInOrderThroughTheStylesheet) {
  setup.Port = -1;
  setup.DebugMode = true;
  EXPECT_TRUE(setup.Save());
  EXPECT_EQ(platform.log.Take(),
            Calls("xml.loadXML the stylesheet; xml.transformNode; xml.loadXML transformed 1; "
                  "xml.save C:\\Games\\Quillorbit.setup"));
  const auto& root = *platform.xml.store.files.at(platform.sProfile)->children.at(0);
  Lines written = {root.sName};
  for (const auto& element : root.children)
    written.push_back(element->sName + " " + element->sText);
  EXPECT_EQ(written,
            Calls("quillorbit_profile; port -1; samples 30; debug 1; "
                  "msg0 Could not open virtual joystick device; msg1 The program will now exit; "
                  "msg2 Virtual Joystick Error; msg3 Could not listen on port; "
                  "msg4 Server bind problem; msg5 Mobile transmitting; msg6 No signal; msg7 Quit; "
                  "msg8 Filter: ; msg9 Packets received: ; msg10 Buttons: ; msg11 Port:; "
                  "msg12 Sensibility:"));
}

TEST_F(SettingsTest, LoadTakesWhatThereIs) {
  using Elements = std::vector<std::pair<std::string, std::string>>;
  platform.StoreProfile(Elements{{"port", "abc"},
                                 {"port", "7"},
                                 {"samples", "5001.5"},
                                 /*no number:*/ {"debug", "true"},
                                 {"msg7", "Ende"},
                                 {"msg5", ""}});
  setup.DebugMode = true;
  EXPECT_TRUE(setup.Load());
  EXPECT_EQ(setup.Port, 0);  // the first one counts, and it is no number
  EXPECT_EQ(setup.Samples, 5002);
  EXPECT_FALSE(setup.DebugMode);
  EXPECT_EQ(setup.Msg(7), "Ende");
  EXPECT_EQ(setup.Msg(5), "");
  EXPECT_EQ(setup.Msg(12), "Sensibility:");
  EXPECT_EQ(setup.Msg(13), "");
  EXPECT_EQ(setup.Msg(-1), "");
  for (const char* sTrue : {"1", "-1", "0.5"}) {
    platform.StoreProfile({{"debug", sTrue}});
    setup.Load();
    EXPECT_TRUE(setup.DebugMode) << sTrue;
  }
}

TEST_F(SettingsTest, MissingProfileChangesNothingAndAnotherRootResetsTheNumbers) {
  setup.Port = 1234;
  setup.DebugMode = true;
  EXPECT_FALSE(setup.Load());
  EXPECT_EQ(setup.Port, 1234);
  setup.Save("D:\\other.xml");
  EXPECT_FALSE(setup.Load());
  platform.StoreProfile({{"port", "7"}, {"msg7", "Ende"}}, "other");
  EXPECT_TRUE(setup.Load());
  EXPECT_EQ(setup.Port, 5000);
  EXPECT_FALSE(setup.DebugMode);
  EXPECT_EQ(setup.Msg(7), "Quit");
  EXPECT_TRUE(setup.Load("D:\\other.xml"));
  EXPECT_EQ(setup.Port, 1234);
}

TEST_F(SettingsTest, FailureLeavesTheRest) {
  platform.StoreProfile({{"port", "6000"}, {"samples", "2147483648"}, {"debug", "1"}});
  EXPECT_THROW(setup.Load(), std::overflow_error);
  EXPECT_EQ(setup.Port, 6000);
  EXPECT_EQ(setup.Samples, 30);
  EXPECT_FALSE(setup.DebugMode);

  platform.resources.bMissing = true;  // the stylesheet
  CSetup other(platform.process, platform.resources, platform.xml);
  EXPECT_THROW(other.Save("other"), std::runtime_error);
  EXPECT_FALSE(platform.xml.store.files.contains("other"));
}

}  // namespace
}  // namespace quillorbit
