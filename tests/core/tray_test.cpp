#include "base/Utf16.h"
#include "core/program.h"
#include "tray/frmSysTray.h"

namespace quillorbit {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t nt4 = 4, win2000 = 5, win95 = 0x80000004, me = 0x80000004 | 90 << 8;

/// The component alone, on a platform of a version.
struct Tray : fakes::FakePlatform {
  explicit Tray(std::uint32_t lVersion = win2000) { process.lVersion = lVersion; }
  Lines Take() { return log.Take(); }
  Lines Captions() {
    Lines captions;
    for (const auto* pItem : FakePlatform::Tray().menuItems) captions.push_back(pItem->sCaption);
    return captions;
  }
  frmSysTray tray{services};
};

template <class Char, std::size_t n>
std::basic_string<Char> Whole(const Char (&field)[n]) {
  return std::basic_string<Char>(field, n);
}

TEST(TrayIcon, IsAddedOnceInTheFormOfThePlatform) {
  struct Case {
    std::uint32_t lVersion;
    const char *sCall, *sSize;
    bool bShell5;
  };
  for (const Case& c :
       {Case{nt4, "W", "152", false}, Case{win2000, "W", "936", true}, Case{6, "W", "936", true},
        Case{win95, "A", "88", false}, Case{me, "A", "488", true}, Case{me + 1, "A", "88", false},
        Case{me + (1 << 8), "A", "88", false}}) {
    Tray t(c.lVersion);
    EXPECT_EQ(t.Take(), Lines{});
    t.tray.AddMenuItem("A");
    t.tray.ToolTip("tip");
    t.tray.ShowBalloonTip("text", "title", 2, 0);
    t.tray.IconHandle(116);  // the one it has
    t.tray.IconHandle(7);
    EXPECT_EQ(t.tray.IconHandle(), 7U);
    t.tray.Unload();
    t.tray.Unload();
    const std::string sCall = std::string("Shell_NotifyIcon") + c.sCall;
    const std::string sIcon = std::string(", ") + c.sSize + ", 1002, 116";
    const bool bWide = *c.sCall == 'W';
    const std::string sTitle = "title" + std::string(bWide ? 0 : 59, ' ');
    const std::string sText = "text" + std::string(bWide ? 0 : 252, ' ');
    const Lines added = {sCall + " 0" + sIcon + ", message 512, icon 116, tip "};
    const Lines version = {sCall + " 4" + sIcon};
    const Lines balloon = {sCall + " 1" + sIcon + ", balloon " + sTitle + ": " + sText + ", 2, 0"};
    const Lines shell5[] = {c.bShell5 ? version : Lines{}, c.bShell5 ? balloon : Lines{}};
    EXPECT_EQ(
        t.Take(),
        added + shell5[0] +
            Lines({"item0.Visible 1", "item0.Caption A", sCall + " 1" + sIcon + ", tip tip"}) +
            shell5[1] +
            Lines({sCall + " 1" + sIcon + ", icon 7", "frmSysTray.Unload", sCall + " 2" + sIcon}))
        << c.lVersion;
  }
}

TEST(TrayIcon, RecordHasDescriptionVersionAndTimeOut) {
  Tray t;
  t.resources.sFileDescription = "described";
  EXPECT_EQ(t.tray.ToolTip(), "described");  // any operation adds the icon first
  EXPECT_EQ(t.shell.lastW.uVersion, 3U);
  t.tray.ShowBalloonTip("m", "t", 1, 2.5);
  EXPECT_EQ(t.shell.lastW.uTimeout, 2U);  // halves to even
  EXPECT_THROW(t.tray.ShowBalloonTip("m", "t", 1, 1e10), std::overflow_error);

  Tray never;
  never.tray.Unload();
  EXPECT_THAT(never.Take(), ElementsAre("frmSysTray.Unload"));  // no icon was added
}

TEST(TrayTexts, WideOnesAreCutToTheirFieldAndEndWithANul) {
  const std::string s300(300, 'x');
  const std::u16string nul(1, u'\0');
  Tray t;
  const auto& record = t.shell.lastW;
  t.tray.ToolTip(s300);
  EXPECT_EQ(Whole(record.szTip), std::u16string(127, u'x') + nul);
  t.tray.ToolTip("short");  // nothing of the long one stays behind
  EXPECT_EQ(Whole(record.szTip), u"short" + std::u16string(123, u'\0'));
  t.tray.ToolTip("");  // leaves the tip as it was
  EXPECT_EQ(t.tray.ToolTip(), "short");
  t.tray.ShowBalloonTip(s300, s300, 1, 0);
  EXPECT_EQ(Whole(record.szInfo), std::u16string(255, u'x') + nul);
  EXPECT_EQ(Whole(record.szInfoTitle), std::u16string(63, u'x') + nul);

  Tray old(nt4);
  old.tray.ToolTip(s300);
  EXPECT_EQ(Whole(old.shell.lastW.szTip), std::u16string(63, u'x') + std::u16string(65, u'\0'));

  // Cut in the middle of a character beyond the first plane: by code units.
  t.tray.ToolTip(std::string(126, 'x') + "\xF0\x9F\x98\x80");
  EXPECT_EQ(Whole(record.szTip), std::u16string(126, u'x') + char16_t(0xD83D) + nul);
  EXPECT_EQ(t.tray.ToolTip(), std::string(126, 'x') + "\xEF\xBF\xBD");
  t.tray.ToolTip("\xFF\xC3\xA4");
  EXPECT_EQ(Whole(record.szTip).substr(0, 3), u"\uFFFD\u00E4" + nul);
}

TEST(TrayTexts, AnsiOnesAreFilledWithBlanksAndConverted) {
  Tray t(me);
  const auto tip = [&](const std::string& sTip) {
    t.tray.ToolTip(sTip);
    return Whole(t.shell.lastA.szTip);
  };
  EXPECT_EQ(tip("\xC3\xA4\xE2\x82\xAC"), std::string("\xE4?\0", 3) + std::string(125, ' '));
  EXPECT_EQ(t.tray.ToolTip(), "\xC3\xA4\xE2\x82\xAC");
  EXPECT_EQ(tip(""), std::string(1, '\0') + std::string(127, ' '));
  EXPECT_EQ(tip(std::string(300, 'x')), std::string(128, 'x'));
  EXPECT_EQ(t.tray.ToolTip(), std::string(128, 'x'));
  t.tray.ShowBalloonTip(std::string(300, 'x'), std::string(300, 'y'), 1, 0);
  EXPECT_EQ(Whole(t.shell.lastA.szInfo), std::string(256, 'x'));
  EXPECT_EQ(Whole(t.shell.lastA.szInfoTitle), std::string(64, 'y'));
}

TEST(TrayNotifications, EachCodeRaisesAtMostOneEvent) {
  Tray t;
  std::string sEvents;
  const auto record = [&](const char* sName) {
    return [&sEvents, sName](auto... button) {
      sEvents += sName;
      ((sEvents += std::to_string(static_cast<int>(button))), ...);
    };
  };
  t.toolkit.pTray->MouseMove(514);  // without a handler
  t.tray.SysTrayMouseDown = record("down");
  t.tray.SysTrayMouseUp = record("up");
  t.tray.SysTrayDoubleClick = record("double");
  t.tray.SysTrayMouseMove = record("move");
  t.tray.BalloonShow = record("show");
  t.tray.BalloonHide = record("hide");
  t.tray.BalloonTimeOut = record("time out");
  t.tray.BalloonClicked = record("clicked");
  std::string sAll;
  for (int lCode = 0; lCode < 0x1000; ++lCode) {
    sEvents.clear();
    t.toolkit.pTray->MouseMove(lCode);
    if (!sEvents.empty()) sAll += std::to_string(lCode) + " " + sEvents + ", ";
  }
  EXPECT_EQ(sAll,
            "512 move, 514 down1, 515 double1, 516 down2, 517 up2, 518 double2, 1026 show, "
            "1027 hide, 1028 time out, 1029 clicked, ");
}

TEST(TrayMenu, ItemsKeepTheirIndexAndLendCaptionAndKey) {
  Tray t;
  Lines clicked;
  t.tray.MenuClick = [&](std::int32_t lIndex, const std::string& sKey) {
    clicked.push_back(std::to_string(lIndex) + sKey);
  };
  const auto clickAll = [&] {
    clicked.clear();
    for (fakes::FakeMenuItem* pItem : t.toolkit.pTray->menuItems) pItem->Click();
    return clicked;
  };
  const auto defaultItem = [&] {
    t.Take();
    t.tray.ShowMenu();
    return t.Take();
  };
  const Lines foreground = {"SetForegroundWindow 1002"};
  EXPECT_EQ(t.tray.AddMenuItem("A", "a"), 0);
  EXPECT_EQ(t.tray.AddMenuItem("B", "b"), 1);
  EXPECT_EQ(t.tray.AddMenuItem("C", "c"), 2);
  EXPECT_THAT(clickAll(), ElementsAre("0a", "1b", "2c"));
  EXPECT_EQ(defaultItem(), foreground + Lines{"frmSysTray.PopupMenu 0, item0"});
  EXPECT_EQ(t.tray.AddMenuItem("D", "d", true), 3);
  EXPECT_EQ(defaultItem(), foreground + Lines{"frmSysTray.PopupMenu 0, item3"});
  t.tray.RemoveMenuItem(3);
  EXPECT_EQ(defaultItem(), foreground + Lines{"frmSysTray.PopupMenu 0, no default"});
  for (const std::int32_t lIndex : {3, -1, 2}) {
    t.tray.DefaultMenuIndex(lIndex);
    EXPECT_EQ(t.tray.DefaultMenuIndex(), lIndex == 2 ? 2 : 0);
  }
  for (const std::int32_t lIndex : {-1, 1, 3}) t.tray.EnableMenuItem(lIndex, false);
  EXPECT_THAT(t.Take(), ElementsAre("item1.Enabled 0"));

  for (const std::int32_t lIndex : {-1, 3, 1}) EXPECT_EQ(t.tray.RemoveMenuItem(lIndex), 0);
  EXPECT_THAT(t.Captions(), ElementsAre("A", "C"));
  EXPECT_THAT(clickAll(), ElementsAre("0a", "1c"));
  EXPECT_EQ(t.tray.RemoveMenuItem(0), 0);
  EXPECT_THAT(t.Captions(), ElementsAre("", "C"));
  EXPECT_EQ(t.tray.AddMenuItem("D"), 2);  // item 0 is not given out again
}

TEST(TrayOfProgram, LeftClickAndBalloonClickRestoreTheWindow) {
  Program p;
  p.Start();
  for (const int lCode : {514, 1029}) {
    p.Hide();
    for (const int lIgnored : {513, 515, 517, 518, 512, 1026, 1027, 1028})
      p.Tray().MouseMove(lIgnored);
    EXPECT_EQ(p.Take(), Lines{});
    p.Tray().MouseMove(lCode);
    const Lines lines = p.Take();
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 3),
              Lines({"frmMain.WindowState 0", "frmMain.Show", "lblFilter.Caption 30"}));
  }
}

TEST(TrayOfProgram, MenuEndsTheProgramFromInsideItsLoop) {
  Program p;
  p.Start();
  p.Tray().whileMenuIsOpen = [&] {
    p.tmrCheck().Elapse();  // the signal is lost meanwhile
    p.Take();
    p.Tray().menuItems.at(0)->Click();
  };
  p.Tray().MouseMove(516);
  EXPECT_EQ(p.Take(), Calls("frmMain.Unload; sckUDP.Close; frmSysTray.Unload; "
                            "Shell_NotifyIconW 2, 936, 1002, 116; CloseHandle 42; End"));
}

}  // namespace
}  // namespace quillorbit
