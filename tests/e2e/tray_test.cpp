#include <array>
#include <chrono>
#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <thread>

#include "e2e/tray_desktop.h"

namespace quillorbit::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr MotionData motion{.x = 75, .y = 75, .z = 42, .zr = 75, .b = 1};
constexpr const char* sNoSignal = "^Quillorbit - No signal$";

struct TrayTest : TrayDesktop {
  /// Starts all and waits for the icon, and for the signal to be missed.
  void StartWithTray(Tray eTray) {
    StartTray(eTray);
    StartAll();
    ASSERT_TRUE(WindowAppears(sNoSignal));
    if (eTray == Tray::None) return;
    ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
    ASSERT_TRUE(BalloonsBecome(1));
  }
  bool BalloonsBecome(std::size_t nBalloons) {
    return Eventually([&] { return Balloons() >= nBalloons; }) && Balloons() == nBalloons;
  }
  /// Expects no further balloon, and no window to come or go, for a while.
  void ExpectQuiet(std::chrono::milliseconds duration) {
    const std::size_t nBalloons = Balloons();
    const bool bWindow = HasWindow(sMainWindow);
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(50ms);
      ASSERT_EQ(Balloons(), nBalloons);
      ASSERT_EQ(HasWindow(sMainWindow), bWindow);
    }
  }
  void ExpectServesDatagrams() {
    const std::size_t nBefore = Reports().size();
    Send(motion);
    EXPECT_TRUE(Eventually([&] { return Reports().size() > nBefore; }, 2s));
  }
  void ExpectClickBringsTheWindowBack() {
    Hide(false);
    ClickIcon();
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
  }
  /// Expects the program to end by itself, in order.
  void ExpectEnded() {
    EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
    EXPECT_TRUE(Eventually([&] { return !HasIcon(); }));
    EXPECT_TRUE(m_driver->IsRunning());
  }
};

struct EachTray : TrayTest, testing::WithParamInterface<Tray> {
  void Start() { StartWithTray(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(Tray, EachTray, testing::Values(Tray::Bus, Tray::Docked),
                         testing::PrintToStringParamName());

TEST_P(EachTray, ShowsWhetherThereIsASignal) {
  Start();
  const std::string sLostTip = Tip();
  const std::string sLostIcon = Icon();
  for (std::size_t nBalloons = 2; nBalloons <= 4; nBalloons += 2) {
    for (int i = 0; i < 15; ++i) {
      Send(motion);
      std::this_thread::sleep_for(50ms);
    }
    EXPECT_TRUE(BalloonsBecome(nBalloons));
    EXPECT_NE(Icon(), sLostIcon);
    EXPECT_TRUE(BalloonsBecome(nBalloons + 1));
    EXPECT_TRUE(Eventually([&] { return Icon() == sLostIcon && Tip() == sLostTip; }));
    EXPECT_EQ(Reports().back(), (JoystickReport{75, 75, 75, 75, 0}));
    ExpectQuiet(1200ms);
  }
  if (m_eTray == Tray::Bus) {
    EXPECT_THAT(Heard("ToolTip "), testing::Contains("(,(),Quillorbit,)"));
    EXPECT_EQ(sLostTip, "(,(),Quillorbit - No signal,)");
    EXPECT_THAT(sLostIcon, testing::StartsWith("((16,16,"));
    const auto lost = testing::StartsWith("Quillorbit|No signal|dialog-warning|default,Open|");
    const auto back =
        testing::StartsWith("Quillorbit|Mobile transmitting|dialog-information|default,Open|");
    EXPECT_THAT(Heard("notification "), testing::ElementsAre(lost, back, lost, back, lost));
  }
  EndProgram();
  ExpectEnded();
}

struct HiddenWindow : EachTray {};
INSTANTIATE_TEST_SUITE_P(Tray, HiddenWindow, testing::Values(Tray::Bus, Tray::Docked, Tray::Mixed),
                         testing::PrintToStringParamName());

TEST_P(HiddenWindow, ComesBackByAClick) {
  Start();
  EndBalloon(false);
  ExpectClickBringsTheWindowBack();
  Hide(true);
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(2));
  EndBalloon(false);
  ASSERT_TRUE(BalloonsBecome(3));
  if (m_eTray != Tray::Docked) User("LetNotificationExpire");
  ExpectQuiet(500ms);
  EXPECT_FALSE(HasWindow(sMainWindow));
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(4));
  EndBalloon(true);
  EXPECT_TRUE(Eventually([] { return IsInFront(); }));
}

TEST_P(EachTray, MenuQuitsWithoutAQuestion) {
  Start();
  Hide(false);
  OpenMenu();
  Command("xdotool key Escape");
  ASSERT_TRUE(Eventually([] { return !Menu(); }));
  ExpectQuiet(500ms);  // and so the next click is no double click
  EXPECT_FALSE(HasWindow(sMainWindow));
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(2));
  OpenMenu();
  ASSERT_TRUE(BalloonsBecome(3));  // the signal is lost with the menu open as without
  EXPECT_TRUE(Menu());
  Command("xdotool key Down Return");
  ExpectEnded();
}

TEST_P(EachTray, MenuQuitsWhileTheWindowAsksWhetherToQuit) {
  Start();
  AskToClose();
  OpenMenu();
  Command("xdotool key q");
  ExpectEnded();
}

TEST_P(EachTray, MenuMayBeOpenWhenTheTrayGoesOrTheProgramEnds) {
  Start();
  OpenMenu();
  m_host.reset();
  m_trayer.reset();
  ExpectServesDatagrams();
  Command("xdotool key Escape");
  ASSERT_TRUE(Eventually([] { return !Menu(); }));
  if (m_eTray == Tray::Bus)
    StartHost();
  else
    StartTrayer();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); })) << m_process->Errors();
  ExpectClickBringsTheWindowBack();
  OpenMenu();
  EndProgram();
  ExpectEnded();
}

struct SecondCopy : EachTray {};
INSTANTIATE_TEST_SUITE_P(Tray, SecondCopy, testing::Values(Tray::None, Tray::Docked),
                         testing::PrintToStringParamName());

TEST_P(SecondCopy, BringsTheWindowToTheFront) {
  Start();
  const ChildProcess other(m_folder, "display",
                           {"-title", "About Quillorbit", "-size", "900x700", "xc:grey"});
  ASSERT_TRUE(WindowAppears("^About Quillorbit$"));
  for (const char* sBefore : {"covered", "minimised", "closed"}) {
    SCOPED_TRACE(sBefore);
    if (*sBefore != 'c' || sBefore[1] == 'l') Hide(sBefore[1] == 'l');
    ASSERT_TRUE(Eventually([] {
      Command("xdotool search --name 'About Quillorbit' windowactivate");
      return !IsInFront();
    }));
    const std::size_t nReports = Reports().size();
    ChildProcess second(m_folder, m_program, {});
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(second.Output() + second.Errors(), "");
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
    EXPECT_EQ(Reports().size(), nReports);
  }
}

TEST_F(TrayTest, CopiesStartedAtOnceLeaveOneRunning) {
  StartTray(Tray::Bus);
  StartDriver();
  StartProgram();
  ChildProcess other(m_folder, m_program, {});
  ASSERT_TRUE(Eventually([&] { return !m_process->IsRunning() || !other.IsRunning(); }));
  ChildProcess& ended = m_process->IsRunning() ? other : *m_process;
  EXPECT_EQ(ended.Wait(), 0);
  EXPECT_EQ(ended.Output() + ended.Errors(), "");
  ASSERT_TRUE(WindowAppears(sNoSignal));
  EXPECT_EQ(Heard("item registered").size(), 1U);
}

TEST_F(TrayTest, TextsOfTheProfileReachTheDesktop) {
  WriteProfile("<quillorbit_profile><port>" + std::to_string(m_nPort) +
               "</port><msg6>&lt;b&gt;Kein&lt;/b&gt; Signal &amp; so</msg6>"
               "<msg7>Schlu\xC3\x9F_</msg7></quillorbit_profile>");
  m_eTray = Tray::Bus;
  StartBus();
  StartHost({"--markup"});
  StartAll();
  ASSERT_TRUE(Eventually([&] { return Tip() == "(,(),Quillorbit - <b>Kein</b> Signal & so,)"; }));
  ASSERT_TRUE(BalloonsBecome(1));
  EXPECT_THAT(LastHeard("notification "), HasSubstr("|&lt;b&gt;Kein&lt;/b&gt; Signal &amp; so|"));
  User("ListMenu");
  ASSERT_TRUE(Eventually([&] { return !LastHeard("menu ").empty(); }));
  EXPECT_THAT(LastHeard("menu "), HasSubstr("(true,_Schlu\xC3\x9F__,true)"));
  User("ClickMenu");  // in the menu that the desktop shows
  ExpectEnded();
}

TEST_F(TrayTest, IconComesBackAfterTheBusAndAfterItsHost) {
  StartWithTray(Tray::Bus);
  const auto restartHost = [&] {
    m_host.reset();
    StartHost();
  };
  const auto restartBus = [&] {
    m_bus->Signal(SIGTERM);
    EXPECT_EQ(m_bus->Wait(), 0);
    m_host.reset();
    ExpectServesDatagrams();
    ASSERT_TRUE(WindowAppears(sNoSignal));
    StartBus();
    StartHost();
  };
  for (const auto& restart : {std::function<void()>(restartHost), std::function(restartBus)}) {
    restart();
    ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
    EXPECT_EQ(Balloons(), 0U);
    Send(motion);
    EXPECT_TRUE(BalloonsBecome(1));
    EXPECT_TRUE(BalloonsBecome(2));
    ExpectClickBringsTheWindowBack();
    Hide(false);
    EndBalloon(true);
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
  }
}

TEST_F(TrayTest, IconComesWithTheTrayWheneverThatComes) {
  StartAll();
  ASSERT_TRUE(WindowAppears(sNoSignal));
  m_eTray = Tray::Docked;
  StartTrayer();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
  ExpectClickBringsTheWindowBack();
}

TEST_F(TrayTest, NotificationServiceThatNeverAnswersCostsItsBalloonsOnly) {
  m_eTray = Tray::Bus;
  StartBus();
  StartHost({"--silent"});
  StartAll();
  ASSERT_TRUE(WindowAppears(sNoSignal));
  ExpectServesDatagrams();
  EXPECT_TRUE(Eventually([&] { return Tip() == "(,(),Quillorbit,)"; }, 2s));
  StartTrayer();
  ExpectClickBringsTheWindowBack();
  EndProgram();
  ExpectEnded();
}

/// How many questions the tray service answers before it falls silent.
struct SilentHost : TrayTest, testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Tray, SilentHost, testing::Values(0, 1));

TEST_P(SilentHost, GivesWayToATrayThatEmbeds) {
  StartBus();
  StartHost({"--answers=" + std::to_string(GetParam()), "--silent"});
  StartTrayer();
  StartAll();
  EXPECT_TRUE(Eventually([] { return DockedIcon().has_value(); }, 3s));
  ExpectServesDatagrams();
  m_eTray = Tray::Docked;
  EXPECT_TRUE(Eventually([&] { return Balloons() > 0; }));  // beside the icon
  EndProgram();
}

TEST_F(TrayTest, BusThatNeverAnswersIsAsGoodAsNone) {
  StartBus();
  StartHost();
  StartTrayer();
  m_bus->Signal(SIGSTOP);
  StartDriver();
  StartProgram();
  ASSERT_TRUE(Eventually([] { return HasWindow(sMainWindow); }, 3s));
  EXPECT_TRUE(Eventually([] { return DockedIcon().has_value(); }, 3s));
  ExpectServesDatagrams();
  m_bus->Signal(SIGCONT);
  EXPECT_TRUE(Eventually([&] { return LastHeard("item ") == "registered"; }, 3s));
  EXPECT_TRUE(Eventually([] { return !DockedIcon(); }, 3s));
  m_bus->Signal(SIGSTOP);
  ExpectServesDatagrams();
  m_process->Signal(SIGTERM);
  EXPECT_TRUE(Eventually([&] { return !m_process->IsRunning(); }, 2s));
  EXPECT_EQ(m_process->Wait(), 0);
}

}  // namespace
}  // namespace quillorbit::test
