#include "core/program.h"
#include "winutil/cFindWIndow.h"
#include "winutil/modWin32.h"

namespace quillorbit {
namespace {

using testing::ElementsAre;

struct WindowTest : testing::Test {
  fakes::FakePlatform platform;
  mWindow windows{platform.windows, platform.codePage};
  cFindWIndow find{windows, platform.process};
};

TEST_F(WindowTest, TitlesAndClassesAreUtf8AndCut) {
  platform.windows.windows = {{1, "\xE4pfel", std::string(300, 'c')}};
  for (const int nExcess : {0, 5}) {
    platform.windows.nLengthExcess = nExcess;
    EXPECT_EQ(windows.GetWindowTitle(1), "\xC3\xA4pfel");
  }
  EXPECT_EQ(windows.GetWindowClass(1), std::string(259, 'c'));
  EXPECT_EQ(windows.GetWindowTitle(2) + windows.GetWindowClass(2), "");  // gone
}

TEST_F(WindowTest, WalkDoesNotStartAnotherOne) {
  struct Sink : IEnumWindowsSink {
    explicit Sink(mWindow& w) : m_windows(w) {}
    void EnumWindow(platform::WindowHandle hwnd, bool& bStop) override {
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

TEST_F(WindowTest, PatternsMatchWholeTextsOrParts) {
  const std::pair<const char*, const char*> matching[] = {
      {"Mixer", "Mixer"}, {"%xer", "Boxers"}, {"Mix%", "Audio Mixer"}, {"%ixe%", "Mixer"},
      {"%", ""},          {"%%", "x"},        {"%%x%%", "a%x%b"}};
  const std::pair<const char*, const char*> others[] = {{"mixer", "Mixer"}, {"Mixer", "Mixers"},
                                                        {"Mix%", "Remix"},  {"%%%", "x"},
                                                        {"a%b", "axb"},     {"", ""}};
  const auto finds = [&](const auto& c) {
    platform.windows.windows = {{9, c.second, ""}};
    find.TitleToFind(c.first);
    return find.FindWindow();
  };
  for (const auto& c : matching) EXPECT_TRUE(finds(c)) << c.first << ", " << c.second;
  for (const auto& c : others) EXPECT_FALSE(finds(c)) << c.first << ", " << c.second;
}

TEST_F(WindowTest, SearchNeedsBothPatternsAndAVisibleWindow) {
  platform.windows.windows = {{1, "My Edit", "MixerClass", false},
                              {2, "My Edit", "Other"},
                              {3, "Other", "MixerClass"},
                              {4, "My Edit", "MixerClass"},
                              {5, "My Edit", "MixerClass"}};
  platform.process.dRnd = 2.5e-9;  // 2.5 rounds to the even neighbour
  EXPECT_FALSE(find.FindWindow());
  EXPECT_THAT(platform.log.Take(), ElementsAre("EnumWindows 2"));
  find.ClassToFind("MixerClass");
  EXPECT_TRUE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 3U);
  find.TitleToFind("%Edit%");
  EXPECT_EQ(find.hWndFound(), 0U);
  EXPECT_TRUE(find.FindWindow());
  EXPECT_EQ(find.hWndFound(), 4U);
  find.ClassToFind("Mixer");
  EXPECT_EQ(find.hWndFound(), 0U);
  EXPECT_FALSE(find.FindWindow());
}

TEST_F(WindowTest, IconsGoToTheTopOwnerToo) {
  platform.windows.owners = {{1, 2}, {2, 3}};
  EXPECT_EQ(SetWindowIcon(platform.services, 1, "AAA", true), 116U);
  EXPECT_EQ(platform.log.Take(),
            Calls("GetWindow 1, 4; GetWindow 2, 4; GetWindow 3, 4; "
                  "LoadImageA 4194304, AAA, 1, 32, 33, 32768; SendMessageA 3, 128, 1, 132; "
                  "SendMessageA 1, 128, 1, 132; LoadImageA 4194304, AAA, 1, 16, 17, 32768; "
                  "SendMessageA 3, 128, 0, 116; SendMessageA 1, 128, 0, 116"));
  platform.windows.owners = {{1, 2}, {2, 1}};
  EXPECT_EQ(SetWindowIcon(platform.services, 1, "AAA", true), 116U);  // owners in a circle
  EXPECT_EQ(SetWindowIcon(platform.services, 1, "nothing", false), 0U);
}

}  // namespace
}  // namespace quillorbit
