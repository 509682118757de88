#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/program.h"
#include "winutil/cFindWIndow.h"
#include "winutil/modWin32.h"

namespace quillorbit {
namespace {

using testing::ElementsAre;

struct WindowTest : testing::Test {
  fakes::FakePlatform platform;
  mWindow windows{platform.windows, platform.codePage};
};

TEST_F(WindowTest, TitlesAndClassesAreWhatThePlatformGivesInTheProgramsTextForm) {
  platform.windows.windows = {{1, "\xE4pfel", std::string(300, 'c')}};
  EXPECT_EQ(windows.GetWindowTitle(1), "\xC3\xA4pfel");
  EXPECT_EQ(windows.GetWindowClass(1), std::string(259, 'c'));
  EXPECT_EQ(windows.GetWindowTitle(2) + windows.GetWindowClass(2), "");  // gone
  platform.windows.nTextLengthTooLong = 5;
  EXPECT_EQ(windows.GetWindowTitle(1), "\xC3\xA4pfel");
}

TEST_F(WindowTest, WalkDoesNotStartAnotherOne) {
  struct Sink : IEnumWindowsSink {
    explicit Sink(mWindow& w) : m_windows(w) {}
    void EnumWindow(platform::WindowHandle hwnd, bool& bStop) override {
      EXPECT_FALSE(bStop);
      seen.push_back(hwnd);
      m_windows.EnumerateWindows(*this);
      bStop = hwnd == 2;
    }
    std::int32_t Identifier() override { return -7; }
    mWindow& m_windows;
    std::vector<platform::WindowHandle> seen;
  } sink(windows);
  platform.windows.windows = {{1, "", ""}, {2, "", ""}, {3, "", ""}};
  windows.EnumerateWindows(sink);
  windows.EnumerateWindows(sink);  // the first one is over
  EXPECT_THAT(sink.seen, ElementsAre(1, 2, 1, 2));
  EXPECT_THAT(platform.log.Take(), ElementsAre("EnumWindows -7", "EnumWindows -7"));
}

TEST_F(WindowTest, PatternsFindTheFirstVisibleMatch) {
  const auto finds = [&](const char* sPattern, const char* sTitle) {
    platform.windows.windows = {{9, sTitle, ""}};
    cFindWIndow find(windows, platform.process);
    find.TitleToFind(sPattern);
    return find.FindWindow();
  };
  struct Case {
    const char *sPattern, *sTitle;
    bool bFound;
  };
  for (const Case& c : {Case{"Mixer", "Mixer", true},
                        Case{"mixer", "Mixer", false},
                        Case{"Mixer", "Mixers", false},
                        Case{"%xer", "Mixer", true},
                        Case{"%xer", "Boxers", true},
                        Case{"Mix%", "Mixer", true},
                        Case{"Mix%", "Audio Mixer", true},
                        Case{"Mix%", "Remix", false},
                        Case{"%ixe%", "Mixer", true},
                        Case{"%", "", true},
                        Case{"%%", "", true},
                        Case{"%%", "x", true},
                        Case{"%%%", "x", false},
                        Case{"%%%", "50%", true},
                        Case{"%%x%%", "a%x%b", true},
                        Case{"%%x%%", "axb", false},
                        Case{"a%b", "a%b", true},
                        Case{"a%b", "axb", false},
                        Case{"Mixer ", "Mixer", false},
                        Case{"", "", false}})
    EXPECT_EQ(finds(c.sPattern, c.sTitle), c.bFound) << c.sPattern << ", " << c.sTitle;
}

TEST_F(WindowTest, SearchNeedsBothPatternsAndAVisibleWindow) {
  platform.windows.windows = {{1, "My Edit", "MixerClass", false},
                              {2, "My Edit", "Other"},
                              {3, "Other", "MixerClass"},
                              {4, "My Edit", "MixerClass"},
                              {5, "My Edit", "MixerClass"}};
  cFindWIndow find(windows, platform.process);
  EXPECT_FALSE(find.FindWindow());
  find.ClassToFind("MixerClass");
  EXPECT_TRUE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 3U);
  find.TitleToFind("%Edit%");
  EXPECT_EQ(find.hWndFound(), 0U);
  EXPECT_TRUE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 4U);
  platform.windows.windows[3].bVisible = platform.windows.windows[4].bVisible = false;
  EXPECT_FALSE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 0U);
  find.ClassToFind("Mixer");
  EXPECT_EQ(find.hWndFound(), 0U);
  EXPECT_FALSE(find.FindWindow());
  platform.log.Take();
  platform.process.dRnd = 2.5e-9;  // 2.5 rounds to the even neighbour
  find.FindWindow();
  EXPECT_THAT(platform.log.Take(), ElementsAre("EnumWindows 2"));
}

TEST_F(WindowTest, IconsGoToTheTopOwnerToo) {
  const auto set = [&](const char* sName, bool bSetOwner) {
    platform.log.Take();
    return SetWindowIcon(platform.services, 1, sName, bSetOwner);
  };
  platform.windows.owners = {{1, 2}, {2, 3}};
  EXPECT_EQ(set("AAA", true), 116U);
  EXPECT_THAT(
      platform.log.Take(),
      ElementsAre("GetWindow 1, 4", "GetWindow 2, 4", "GetWindow 3, 4",
                  "LoadImageA 4194304, AAA, 1, 32, 33, 32768", "SendMessageA 3, 128, 1, 132",
                  "SendMessageA 1, 128, 1, 132", "LoadImageA 4194304, AAA, 1, 16, 17, 32768",
                  "SendMessageA 3, 128, 0, 116", "SendMessageA 1, 128, 0, 116"));
  platform.windows.owners = {{1, 2}, {2, 1}};
  EXPECT_EQ(set("AAA", true), 116U);  // owners in a circle have an end too
  EXPECT_EQ(set("nothing", false), 0U);
  EXPECT_THAT(
      platform.log.Take(),
      ElementsAre("LoadImageA 4194304, nothing, 1, 32, 33, 32768", "SendMessageA 1, 128, 1, 0",
                  "LoadImageA 4194304, nothing, 1, 16, 17, 32768", "SendMessageA 1, 128, 0, 0"));
}

}  // namespace
}  // namespace quillorbit
