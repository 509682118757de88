#include "core/program.h"
#include "tray/frmSysTray.h"

namespace quillorbit {
namespace {

constexpr std::uint32_t nt4 = 4, win2000 = 5, win95 = 0x80000004, me = 0x80000004 | 90 << 8;

/// The component alone, on a platform of a version.
struct Tray : fakes::FakePlatform {
  explicit Tray(std::uint32_t lVersion = win2000) { process.lVersion = lVersion; }
  Lines Take() { return log.Take(); }
  frmSysTray tray{services};
};

TEST(TrayIcon, IsAddedOnceInTheFormOfThePlatform) {
  struct Case {
    std::uint32_t lVersion;
    std::string sCall, sSize, sTip, sBalloon;  // no balloon: nothing of shell version 5 either
  };
  const std::string sFilled = "title" + std::string(59, ' ') + ": text" + std::string(252, ' ');
  for (const Case& c :
       {Case{nt4, "W", "152", "\xC3\xA4", ""}, Case{win2000, "W", "936", "\xC3\xA4", "title: text"},
        Case{win95, "A", "88", "\xE4", ""}, Case{me, "A", "488", "\xE4", sFilled}}) {
    Tray t(c.lVersion);
    t.resources.sFileDescription = "described";
    t.tray.AddMenuItem("A");
    t.tray.ToolTip("\xC3\xA4");
    t.tray.ShowBalloonTip("text", "title", 2, 0);
    t.tray.IconHandle(116);  // the one it has
    t.tray.IconHandle(7);
    t.tray.Unload();
    const auto notify = [&](int lMessage, const std::string& sFields) {
      return Lines{"Shell_NotifyIcon" + c.sCall + " " + std::to_string(lMessage) + ", " + c.sSize +
                   ", 1002, 116" + sFields};
    };
    const bool bShell5 = !c.sBalloon.empty();
    EXPECT_EQ(t.Take(), notify(0, ", message 512, icon 116, tip described") +
                            (bShell5 ? notify(4, "") : Lines{}) +
                            Calls("item0.Visible 1; item0.Caption A") +
                            notify(1, ", tip " + c.sTip) +
                            (bShell5 ? notify(1, ", balloon " + c.sBalloon + ", 2, 0") : Lines{}) +
                            notify(1, ", icon 7") + Lines{"frmSysTray.Unload"} + notify(2, ""));
  }
}

TEST(TrayIcon, TextsAreCutToTheirFieldAndEndWithANul) {
  Tray t;
  const auto& record = t.shell.lastW;
  const auto text = [](const auto& field) { return std::u16string(field, std::size(field)); };
  const auto cut = [](std::size_t n) { return std::u16string(n, u'x') + u'\0'; };
  const std::string s300(300, 'x');
  t.tray.ToolTip(s300);
  EXPECT_EQ(text(record.szTip), cut(127));
  t.tray.ToolTip("short");  // nothing of the long one stays behind
  EXPECT_EQ(text(record.szTip), u"short" + std::u16string(123, u'\0'));
  t.tray.ShowBalloonTip(s300, s300, 1, 0);
  EXPECT_EQ(text(record.szInfo), cut(255));
  EXPECT_EQ(text(record.szInfoTitle), cut(63));
}

TEST(TrayMenu, ItemsKeepTheirIndexAndLendCaptionAndKey) {
  Tray t;
  Lines clicked;
  t.tray.MenuClick = [&](std::int32_t lIndex, const std::string& sKey) {
    clicked.push_back(std::to_string(lIndex) + sKey);
  };
  const auto expectDefault = [&](const std::string& sItem) {
    t.Take();
    t.tray.ShowMenu();
    EXPECT_EQ(t.Take(), Calls("SetForegroundWindow 1002; frmSysTray.PopupMenu 0, " + sItem));
  };
  t.tray.AddMenuItem("A", "a");
  t.tray.AddMenuItem("B", "b");
  EXPECT_EQ(t.tray.AddMenuItem("C", "c"), 2);
  expectDefault("item0");
  EXPECT_EQ(t.tray.AddMenuItem("D", "d", true), 3);
  expectDefault("item3");
  t.tray.RemoveMenuItem(3);
  expectDefault("no default");
  for (const std::int32_t lIndex : {-1, 1, 3}) t.tray.EnableMenuItem(lIndex, false);
  EXPECT_EQ(t.Take(), Lines{"item1.Enabled 0"});

  for (const std::int32_t lIndex : {-1, 3, 1}) t.tray.RemoveMenuItem(lIndex);
  EXPECT_EQ(t.Take(), Lines{"item1.Caption C"});
  for (fakes::FakeMenuItem* pItem : t.toolkit.pTray->menuItems) pItem->Click();
  EXPECT_EQ(clicked, Lines({"0a", "1c"}));
  t.tray.RemoveMenuItem(0);
  EXPECT_EQ(t.Take(), Lines{"item0.Caption "});
  EXPECT_EQ(t.tray.AddMenuItem("D"), 2);  // item 0 is not given out again
}

TEST(TrayOfProgram, ClicksRestoreTheWindowAndTheMenuEndsTheProgramFromInsideItsLoop) {
  Program p;
  p.Start();
  for (const int lCode : {514, 1029}) {
    p.Hide();
    p.Tray().MouseMove(lCode);
    EXPECT_EQ(Lines(p.log.Calls().begin(), p.log.Calls().begin() + 3),
              Calls("frmMain.WindowState 0; frmMain.Show; lblFilter.Caption 30"));
  }
  p.Take();
  for (const int lCode : {511, 512, 513, 515, 517, 518, 1025, 1026, 1027, 1028})
    p.Tray().MouseMove(lCode);
  EXPECT_EQ(p.Take(), Lines{});
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
