#include "core/program.h"
#include "winutil/cFindWIndow.h"
#include "winutil/modWin32.h"

namespace quillorbit {
namespace {

struct WindowTest : testing::Test {
  fakes::FakePlatform platform;
  mWindow windows{platform.windows, platform.codePage};
  cFindWIndow find{windows, platform.process};
};

TEST_F(WindowTest, PatternsMatchWholeTextsOrParts) {
  struct Case {
    const char *sPattern, *sTitle;
    bool bFound;
  };
  for (const Case& c :
       {Case{"Mixer", "Mixer", true}, Case{"%xer", "Boxers", true}, Case{"Mix%", "A Mixer", true},
        Case{"%%x%%", "a%x%b", true}, Case{"%", "", true}, Case{"mixer", "Mixer", false},
        Case{"Mixer", "Mixers", false}, Case{"Mix%", "Remix", false}, Case{"a%b", "axb", false}}) {
    platform.windows.windows = {{9, c.sTitle, ""}};
    find.TitleToFind(c.sPattern);
    EXPECT_EQ(find.FindWindow(), c.bFound) << c.sPattern << ", " << c.sTitle;
  }
}

TEST_F(WindowTest, SearchNeedsBothPatternsAndAVisibleWindow) {
  platform.windows.windows = {{1, "My Edit", "MixerClass", false},
                              {2, "My Edit", "Other"},
                              {3, "Other", "MixerClass"},
                              {4, "My Edit", "MixerClass"},
                              {5, "My Edit", "MixerClass"}};
  find.ClassToFind("MixerClass");
  EXPECT_TRUE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 3U);
  find.TitleToFind("%Edit%");
  EXPECT_EQ(find.hWndFound(), 0U);
  EXPECT_TRUE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 4U);
}

TEST_F(WindowTest, IconsGoToTheTopOwnerToo) {
  platform.windows.owners = {{1, 2}, {2, 3}};
  EXPECT_EQ(SetWindowIcon(platform.services, 1, "AAA", true), 116U);
  EXPECT_EQ(platform.log.Take(),
            Calls("GetWindow 1, 4; GetWindow 2, 4; GetWindow 3, 4; "
                  "LoadImageA 4194304, AAA, 1, 32, 33, 32768; SendMessageA 3, 128, 1, 132; "
                  "SendMessageA 1, 128, 1, 132; LoadImageA 4194304, AAA, 1, 16, 17, 32768; "
                  "SendMessageA 3, 128, 0, 116; SendMessageA 1, 128, 0, 116"));
}

}  // namespace
}  // namespace quillorbit
