#include "core/program.h"
#include "settings/CSetup.h"

namespace quillorbit {
namespace {

struct SettingsTest : testing::Test {
  fakes::FakePlatform platform;
  CSetup setup{platform.process, platform.resources, platform.xml};
};

TEST_F(SettingsTest, SavedProfileIsReadBack) {
  platform.StoreProfile({{"port", "-1"}, {"samples", "7"}, {"debug", "1"}, {"msg12", "Grad:"}});
  EXPECT_TRUE(setup.Load());
  EXPECT_TRUE(setup.Save("other"));
  CSetup other(platform.process, platform.resources, platform.xml);
  EXPECT_TRUE(other.Load("other"));
  EXPECT_EQ(std::tuple(other.Port, other.Samples, other.DebugMode, other.Msg(12), other.Msg(7)),
            std::tuple(-1, 7, true, "Grad:", "Quit"));
}

TEST_F(SettingsTest, LoadTakesWhatThereIs) {
  setup.Port = 1234;
  EXPECT_FALSE(setup.Load());
  EXPECT_EQ(setup.Port, 1234);  // without a profile nothing changes
  platform.StoreProfile({{"port", "abc"}, {"port", "7"}, {"samples", "5001.5"}, {"msg5", ""}});
  EXPECT_TRUE(setup.Load());
  EXPECT_EQ(setup.Port, 0);  // the first one counts, and it is no number
  EXPECT_EQ(setup.Samples, 5002);
  EXPECT_EQ(setup.Msg(5), "");
  // Another root resets the numbers.
  setup.DebugMode = true;
  platform.StoreProfile({{"port", "7"}, {"msg7", "Ende"}}, "other");
  EXPECT_TRUE(setup.Load());
  EXPECT_EQ(std::tuple(setup.Port, setup.Samples, setup.DebugMode, setup.Msg(7)),
            std::tuple(5000, 30, false, "Quit"));
}

}  // namespace
}  // namespace quillorbit
