#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Utf16.h"
#include "core/program.h"
#include "tray/TextFields.h"
#include "tray/frmSysTray.h"

namespace quillorbit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t nt4 = 4, win2000 = 5, xp = 0x0105, nt3 = 3 | 51 << 8, vista = 6,
                        win95 = 0x80000004, win98 = 0x80000004 | 10 << 8, me = 0x80000004 | 90 << 8,
                        win9x5 = 0x80000005 | 90 << 8, afterMe = 0x80000004 | 91 << 8;

/// The component alone, on a platform of a version.
struct Tray {
  explicit Tray(std::uint32_t lVersion = win2000) { platform.process.lVersion = lVersion; }

  Lines Take() { return platform.log.Take(); }
  void Notify(std::int32_t lCode) { platform.Tray().MouseMove(lCode); }
  fakes::FakeMenuItem& Item(std::size_t i) { return *platform.Tray().menuItems.at(i); }
  Lines Captions() {
    Lines captions;
    for (const auto* pItem : platform.Tray().menuItems) captions.push_back(pItem->sCaption);
    return captions;
  }

  fakes::FakePlatform platform;
  frmSysTray tray{platform.services};
};

std::u16string Tip(const Tray& t) {
  return std::u16string(FieldText(t.platform.shell.lastW.szTip));
}

TEST(TrayIcon, IsAddedOnceInTheFormOfThePlatform) {
  struct Case {
    std::uint32_t lVersion;
    const char *sCall, *sSize;
    bool bShell5;
  };
  for (const Case& c :
       {Case{nt3, "W", "152", false}, Case{nt4, "W", "152", false}, Case{win2000, "W", "936", true},
        Case{xp, "W", "936", true}, Case{vista, "W", "936", true}, Case{win95, "A", "88", false},
        Case{win98, "A", "88", false}, Case{me, "A", "488", true}, Case{win9x5, "A", "88", false},
        Case{afterMe, "A", "88", false}}) {
    SCOPED_TRACE(c.lVersion);
    Tray t(c.lVersion);
    EXPECT_THAT(t.Take(), IsEmpty());
    t.tray.AddMenuItem("A");
    t.tray.ToolTip("tip");
    const std::string sCall = std::string("Shell_NotifyIcon") + c.sCall;
    const std::string sIcon = std::string(", ") + c.sSize + ", 1002, 116";
    Lines expected = {sCall + " 0" + sIcon + ", message 512, icon 116, tip ", "item0.Visible = 1",
                      "item0.Caption = A", sCall + " 1" + sIcon + ", tip tip"};
    if (c.bShell5) expected.insert(expected.begin() + 1, sCall + " 4" + sIcon);
    EXPECT_EQ(t.Take(), expected);

    t.tray.ShowBalloonTip("text", "title", 2, 0);
    const Lines balloon = {sCall + " 1" + sIcon + ", balloon " +
                           (*c.sCall == 'W' ? "title: text, 2, 0"
                                            : "title" + std::string(59, ' ') + ": text" +
                                                  std::string(252, ' ') + ", 2, 0")};
    EXPECT_EQ(t.Take(), c.bShell5 ? balloon : Lines{});

    t.tray.IconHandle(116);  // the one it has
    t.tray.IconHandle(7);
    t.tray.IconHandle(7);
    EXPECT_EQ(t.tray.IconHandle(), 7U);
    t.tray.Unload();
    t.tray.Unload();
    EXPECT_EQ(t.Take(), (Lines{sCall + " 1" + sIcon + ", icon 7", "frmSysTray.Unload",
                               sCall + " 2" + sIcon}));
  }
}

TEST(TrayIcon, VersionIsSetInTheAddedRecordAndTheDescriptionIsTheFirstTip) {
  Tray t;
  t.platform.resources.sFileDescription = "described";
  EXPECT_EQ(t.tray.DefaultMenuIndex(), 0);  // any operation adds the icon first
  EXPECT_EQ(Tip(t), u"described");
  EXPECT_EQ(t.platform.shell.lastW.uVersion, 3U);
  EXPECT_EQ(t.tray.ToolTip(), "described");
  t.tray.ShowBalloonTip("m", "t", 1, 2.5);
  EXPECT_EQ(t.platform.shell.lastW.uTimeout, 2U);  // halves to even
  EXPECT_THROW(t.tray.ShowBalloonTip("m", "t", 1, 1e10), std::overflow_error);
}

TEST(TrayIcon, IconThatWasNeverAddedIsNotDeleted) {
  Tray t;
  t.tray.Unload();
  EXPECT_THAT(t.Take(), ElementsAre("frmSysTray.Unload"));
}

TEST(TrayIcon, RefusedIconLeavesTheComponentWorking) {
  Tray t;
  t.platform.shell.bRefuses = true;
  EXPECT_EQ(t.tray.AddMenuItem("A"), 0);
  t.tray.ToolTip("tip");
  EXPECT_EQ(t.tray.ToolTip(), "tip");
}

TEST(TrayTexts, WideOnesAreCutToTheirFieldAndEndWithANul) {
  const std::string s300(300, 'x');
  Tray t;
  t.tray.ToolTip(s300);
  EXPECT_EQ(Tip(t), std::u16string(127, u'x'));
  t.tray.ToolTip("short");  // nothing of the long one stays behind
  EXPECT_EQ(std::u16string(t.platform.shell.lastW.szTip, 128), u"short" + std::u16string(123, 0));
  t.tray.ToolTip("");  // leaves the tip as it was
  EXPECT_EQ(t.tray.ToolTip(), "short");
  t.tray.ShowBalloonTip(s300, s300, 1, 0);
  EXPECT_EQ(FieldText(t.platform.shell.lastW.szInfo), std::u16string(255, u'x'));
  EXPECT_EQ(FieldText(t.platform.shell.lastW.szInfoTitle), std::u16string(63, u'x'));

  Tray old(nt4);
  old.tray.ToolTip(s300);
  EXPECT_EQ(Tip(old), std::u16string(63, u'x'));

  // Cut in the middle of a character beyond the first plane: by code units.
  t.tray.ToolTip(std::string(126, 'x') + "\xF0\x9F\x98\x80");
  EXPECT_EQ(Tip(t), std::u16string(126, u'x') + char16_t(0xD83D));
  EXPECT_EQ(t.tray.ToolTip(), std::string(126, 'x') + "\xEF\xBF\xBD");
  t.tray.ToolTip("\xFF\xC3\xA4");
  EXPECT_EQ(Tip(t), u"\uFFFD\u00E4");
}

TEST(TrayTexts, AnsiOnesAreFilledWithBlanksAndConverted) {
  Tray t(me);
  const auto tip = [&] { return std::string(t.platform.shell.lastA.szTip, 128); };
  t.tray.ToolTip("\xC3\xA4\xE2\x82\xAC");
  EXPECT_EQ(tip(), std::string("\xE4?\0", 3) + std::string(125, ' '));
  EXPECT_EQ(t.tray.ToolTip(), "\xC3\xA4\xE2\x82\xAC");
  t.tray.ToolTip("");
  EXPECT_EQ(tip(), std::string(1, '\0') + std::string(127, ' '));
  t.tray.ToolTip(std::string(300, 'x'));
  EXPECT_EQ(tip(), std::string(128, 'x'));
  EXPECT_EQ(t.tray.ToolTip(), std::string(128, 'x'));
  t.tray.ShowBalloonTip(std::string(300, 'x'), std::string(300, 'y'), 1, 0);
  EXPECT_EQ(std::string(t.platform.shell.lastA.szInfo, 256), std::string(256, 'x'));
  EXPECT_EQ(std::string(t.platform.shell.lastA.szInfoTitle, 64), std::string(64, 'y'));
  t.tray.ShowBalloonTip("", "", 1, 0);
  EXPECT_EQ(std::string(t.platform.shell.lastA.szInfo, 256), std::string(256, ' '));
}

TEST(TrayNotifications, EachCodeRaisesAtMostOneEvent) {
  Tray t;
  Lines events;
  const auto button = [&](const std::string& s) {
    return [&events, s](SysTrayButton e) {
      events.push_back(s + " " + std::to_string(static_cast<int>(e)));
    };
  };
  const auto plain = [&](const std::string& s) { return [&events, s] { events.push_back(s); }; };
  for (int lCode = 0; lCode < 0x10000; ++lCode) t.Notify(lCode);  // without an owner
  t.tray.SysTrayMouseDown = button("down");
  t.tray.SysTrayMouseUp = button("up");
  t.tray.SysTrayDoubleClick = button("double");
  t.tray.SysTrayMouseMove = plain("move");
  t.tray.BalloonShow = plain("show");
  t.tray.BalloonHide = plain("hide");
  t.tray.BalloonTimeOut = plain("time out");
  t.tray.BalloonClicked = plain("clicked");
  for (int lCode = 0; lCode < 0x10000; ++lCode) {
    const std::size_t n = events.size();
    t.Notify(lCode);
    if (events.size() > n) events.back() += " " + std::to_string(lCode);
  }
  EXPECT_THAT(events, ElementsAre("move 512", "down 1 514", "double 1 515", "down 2 516",
                                  "up 2 517", "double 2 518", "show 1026", "hide 1027",
                                  "time out 1028", "clicked 1029"));
}

struct TrayMenu : testing::Test {
  TrayMenu() {
    t.tray.MenuClick = [this](std::int32_t lIndex, const std::string& sKey) {
      clicked.push_back(std::to_string(lIndex) + " " + sKey);
    };
  }
  Lines ClickAll() {
    clicked.clear();
    for (fakes::FakeMenuItem* pItem : t.platform.Tray().menuItems) pItem->Click();
    return clicked;
  }
  std::string DefaultItem() {
    t.Take();
    t.tray.ShowMenu();
    const Lines lines = t.Take();
    EXPECT_EQ(lines.at(lines.size() - 2), "SetForegroundWindow 1002");
    return lines.back();
  }
  void AddABC() {
    EXPECT_EQ(t.tray.AddMenuItem("A", "a"), 0);
    EXPECT_EQ(t.tray.AddMenuItem("B", "b"), 1);
    EXPECT_EQ(t.tray.AddMenuItem("C", "c"), 2);
  }
  Tray t;
  Lines clicked;
};

TEST_F(TrayMenu, ItemsAreAddedOnTopAndTellIndexAndKey) {
  AddABC();
  EXPECT_THAT(t.Captions(), ElementsAre("A", "B", "C"));
  EXPECT_THAT(ClickAll(), ElementsAre("0 a", "1 b", "2 c"));
  EXPECT_EQ(DefaultItem(), "frmSysTray.PopupMenu 0, item0");
  EXPECT_EQ(t.tray.AddMenuItem("D", "d", true), 3);
  EXPECT_EQ(t.tray.DefaultMenuIndex(), 3);
  EXPECT_EQ(DefaultItem(), "frmSysTray.PopupMenu 0, item3");
  t.tray.RemoveMenuItem(3);
  EXPECT_EQ(DefaultItem(), "frmSysTray.PopupMenu 0, no default");
  for (const std::int32_t lIndex : {3, -1, 99}) {
    t.tray.DefaultMenuIndex(lIndex);
    EXPECT_EQ(t.tray.DefaultMenuIndex(), 0);
  }
  t.tray.DefaultMenuIndex(2);
  EXPECT_EQ(t.tray.DefaultMenuIndex(), 2);
  t.Take();
  for (const std::int32_t lIndex : {-1, 1, 3}) t.tray.EnableMenuItem(lIndex, false);
  EXPECT_THAT(t.Take(), ElementsAre("item1.Enabled = 0"));
}

TEST_F(TrayMenu, RemovingMovesCaptionsAndKeysDownButItemZeroStays) {
  AddABC();
  for (const std::int32_t lIndex : {-1, 3}) EXPECT_EQ(t.tray.RemoveMenuItem(lIndex), 0);
  EXPECT_THAT(t.Captions(), ElementsAre("A", "B", "C"));
  EXPECT_EQ(t.tray.RemoveMenuItem(1), 0);
  EXPECT_THAT(t.Captions(), ElementsAre("A", "C"));
  EXPECT_THAT(ClickAll(), ElementsAre("0 a", "1 c"));
  EXPECT_EQ(t.tray.RemoveMenuItem(0), 0);
  EXPECT_THAT(t.Captions(), ElementsAre("", "C"));
  EXPECT_THAT(ClickAll(), ElementsAre("0 a", "1 c"));
  EXPECT_EQ(t.tray.AddMenuItem("D"), 2);  // item 0 is not given out again
}

// The icon in the whole program

struct TrayOfProgram : testing::Test {
  TrayOfProgram() { p.Start(); }
  void Notify(std::int32_t lCode) { p.platform.Tray().MouseMove(lCode); }
  Program p;
};

/// The text display, which no datagram has reached yet.
const Lines restored = {"frmMain.WindowState = 0", "frmMain.Show",
                        "lblFilter.Caption = 30",  "lblPacket.Caption = 0 (0/s)",
                        "lblX.Caption = 0 (0)",    "lblY.Caption = 0 (0)",
                        "lblZ.Caption = 0",        "lblZr.Caption = 0",
                        "lblButtons.Caption = 0"};

TEST_F(TrayOfProgram, LeftClickAndBalloonClickRestoreTheWindow) {
  p.Hide();
  Notify(513);
  EXPECT_THAT(p.Take(), IsEmpty());
  Notify(514);
  EXPECT_EQ(p.Take(), restored);
  for (const int lCode : {515, 517, 518, 512, 1026, 1027, 1028}) Notify(lCode);
  EXPECT_THAT(p.Take(), IsEmpty());
  Notify(1029);
  EXPECT_EQ(p.Take(), restored);
}

TEST_F(TrayOfProgram, MenuEndsTheProgramFromInsideItsLoop) {
  p.platform.Tray().whileMenuIsOpen = [this] {
    EXPECT_EQ(p.platform.Tray().menuItems.at(0)->sCaption, "&Quit");
    p.platform.tmrCheck().Elapse();  // the signal is lost meanwhile
    p.Take();
    p.platform.Tray().menuItems.at(0)->Click();
  };
  Notify(516);
  EXPECT_THAT(p.Take(),
              ElementsAre("frmMain.Unload", "sckUDP.Close", "frmSysTray.Unload",
                          "Shell_NotifyIconW 2, 936, 1002, 116", "CloseHandle 42", "End"));
  EXPECT_TRUE(p.platform.Tray().bUnloaded);
}

TEST_F(TrayOfProgram, IconGoesOnceHoweverTheSessionEnds) {
  p.platform.Tray().Close(platform::UnloadReason::AppWindows);
  p.platform.Window().Close(platform::UnloadReason::AppWindows);
  EXPECT_THAT(p.Take(),
              ElementsAre("Shell_NotifyIconW 2, 936, 1002, 116", "sckUDP.Close", "CloseHandle 42"));
}

}  // namespace
}  // namespace quillorbit
