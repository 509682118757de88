#include <gtest/gtest.h>
#include <limits>

#include "fakes/platform.h"
#include "settings/CSetup.h"

namespace quillorbit {
namespace {

using Elements = std::vector<std::pair<std::string, std::string>>;

struct SettingsTest : testing::Test {
  CSetup NewSetup() { return {platform.process, platform.resources, platform.xml}; }
  fakes::FakePlatform platform;
};

TEST_F(SettingsTest, SaveWritesEverythingInOrderThroughTheStylesheet) {
  CSetup setup = NewSetup();
  setup.Port = -1;
  setup.DebugMode = true;
  EXPECT_TRUE(setup.Save());
  EXPECT_EQ(platform.log.Take(),
            (std::vector<std::string>{"xml.loadXML the stylesheet", "xml.transformNode",
                                      "xml.loadXML transformed 1",
                                      "xml.save C:\\Games\\Quillorbit.setup"}));
  const auto& document = *platform.xml.store.files.at(fakes::FakePlatform::sProfile);
  ASSERT_EQ(document.children.size(), 1U);
  EXPECT_EQ(document.children[0]->sName, "quillorbit_profile");
  Elements written;
  for (const auto& e : document.children[0]->children) written.emplace_back(e->sName, e->sText);
  EXPECT_EQ(written, (Elements{{"port", "-1"},
                               {"samples", "30"},
                               {"debug", "1"},
                               {"msg0", "Could not open virtual joystick device"},
                               {"msg1", "The program will now exit"},
                               {"msg2", "Virtual Joystick Error"},
                               {"msg3", "Could not listen on port"},
                               {"msg4", "Server bind problem"},
                               {"msg5", "Mobile transmitting"},
                               {"msg6", "No signal"},
                               {"msg7", "Quit"},
                               {"msg8", "Filter: "},
                               {"msg9", "Packets received: "},
                               {"msg10", "Buttons: "},
                               {"msg11", "Port:"},
                               {"msg12", "Sensibility:"}}));
}

TEST_F(SettingsTest, LoadTakesWhatThereIs) {
  platform.StoreProfile({{"port", "abc"},
                         {"port", "7"},
                         {"samples", "5001.5"},
                         {"debug", "true"},
                         {"msg7", "Ende"},
                         {"msg5", ""}});
  CSetup setup = NewSetup();
  setup.DebugMode = true;
  EXPECT_TRUE(setup.Load());
  EXPECT_EQ(setup.Port, 0);  // the first one counts, and it is no number
  EXPECT_EQ(setup.Samples, 5002);
  EXPECT_FALSE(setup.DebugMode);
  EXPECT_EQ(setup.Msg(7), "Ende");
  EXPECT_EQ(setup.Msg(5), "");
  EXPECT_EQ(setup.Msg(8), "Filter: ");
  EXPECT_EQ(setup.Msg(13), "");
  EXPECT_EQ(setup.Msg(-1), "");
  EXPECT_EQ(setup.Msg(std::numeric_limits<std::int16_t>::min()), "");

  for (const char* sTrue : {"1", "2", "-1", "0.5"}) {
    platform.StoreProfile({{"debug", sTrue}});
    setup.Load();
    EXPECT_TRUE(setup.DebugMode) << sTrue;
  }
}

TEST_F(SettingsTest, MissingProfileChangesNothingAndAnotherRootResetsTheNumbers) {
  CSetup setup = NewSetup();
  setup.Port = 1234;
  setup.DebugMode = true;
  EXPECT_FALSE(setup.Load());
  EXPECT_FALSE(setup.Load("elsewhere"));
  EXPECT_EQ(setup.Port, 1234);

  platform.StoreProfile({{"port", "7"}, {"msg7", "Ende"}}, "other");
  EXPECT_TRUE(setup.Load());
  EXPECT_EQ(setup.Port, 5000);
  EXPECT_FALSE(setup.DebugMode);
  EXPECT_EQ(setup.Msg(7), "Quit");
}

TEST_F(SettingsTest, NumberOutOfRangeStopsWhereItStands) {
  platform.StoreProfile({{"port", "6000"}, {"samples", "2147483648"}, {"debug", "1"}});
  CSetup setup = NewSetup();
  EXPECT_THROW(setup.Load(), std::overflow_error);
  EXPECT_EQ(setup.Port, 6000);
  EXPECT_EQ(setup.Samples, 30);
  EXPECT_FALSE(setup.DebugMode);
}

TEST_F(SettingsTest, ExplicitFileLeavesTheDefaultOne) {
  CSetup setup = NewSetup();
  setup.Port = 6000;
  setup.Save("D:\\other.xml");
  EXPECT_FALSE(setup.Load());
  setup.Port = 1;
  EXPECT_TRUE(setup.Load("D:\\other.xml"));
  EXPECT_EQ(setup.Port, 6000);
}

TEST_F(SettingsTest, MissingStylesheetFailsOnlySave) {
  platform.resources.bMissing = true;
  CSetup setup = NewSetup();
  EXPECT_EQ(setup.Port, 5000);
  EXPECT_THROW(setup.Save(), std::runtime_error);
  EXPECT_TRUE(platform.xml.store.files.empty());
}

}  // namespace
}  // namespace quillorbit
