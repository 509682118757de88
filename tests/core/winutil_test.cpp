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

TEST_F(WindowTest, VisibleWindowOfTheClassMatchesByItsWholeTitleOrAPart) {
  struct Case {
    const char *sPattern, *sTitle;
    bool bFound;
  };
  find.ClassToFind("Class");
  for (const Case& c :
       {Case{"Mixer", "Mixer", true}, Case{"%xer", "Boxers", true}, Case{"Mix%", "A Mixer", true},
        Case{"%%x%%", "a%x%b", true}, Case{"%", "", true}, Case{"mixer", "Mixer", false},
        Case{"Mixer", "Mixers", false}, Case{"Mix%", "Remix", false}, Case{"a%b", "axb", false}}) {
    platform.windows.windows = {
        {7, c.sTitle, "Class", false}, {8, c.sTitle, "Other"}, {9, c.sTitle, "Class"}};
    find.TitleToFind(c.sPattern);
    EXPECT_EQ(find.FindWindow(), c.bFound) << c.sPattern << ", " << c.sTitle;
    EXPECT_EQ(find.hWndFound(), c.bFound ? 9U : 0U);
  }
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
