#include <array>
#include <csignal>
#include <cstdio>
#include <functional>
#include <gmock/gmock.h>
#include <thread>

#include "e2e/tray_desktop.h"

namespace quillorbit::test {
namespace {

using namespace std::chrono_literals;

constexpr JoystickReport centred{75, 75, 75, 75, 0};
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
  /// Expects no balloon more, and no window to come or go, for a while.
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
    auto transmission = Transmission();
    EXPECT_TRUE(BalloonsBecome(nBalloons));
    EXPECT_TRUE(Eventually([&] { return Icon() != sLostIcon; }));
    EXPECT_TRUE(Eventually([&] { return Tip() != sLostTip; }));
    ExpectQuiet(500ms);
    transmission = {};
    EXPECT_TRUE(BalloonsBecome(nBalloons + 1));
    EXPECT_TRUE(Eventually([&] { return Icon() == sLostIcon; }));
    EXPECT_TRUE(Eventually([&] { return Tip() == sLostTip; }));
    const auto reports = Reports();
    EXPECT_EQ(reports.back(), centred);
    EXPECT_NE(reports.at(reports.size() - 2), centred);
    ExpectQuiet(1200ms);
    EXPECT_EQ(Reports().size(), reports.size());
  }
  if (m_eTray == Tray::Bus) {
    EXPECT_EQ(sLostTip, "Quillorbit - No signal");
    EXPECT_THAT(Heard("tooltip "), testing::Contains("Quillorbit"));
    const auto lost = testing::StartsWith("Quillorbit|No signal|dialog-warning|");
    const auto back = testing::StartsWith("Quillorbit|Mobile transmitting|dialog-information|");
    EXPECT_THAT(Heard("notification "), testing::ElementsAre(lost, back, lost, back, lost));
    EXPECT_THAT(Heard("notification "), testing::Each(testing::HasSubstr("|default,Open|")));
  }
  EndProgram();
  ExpectEnded();
}

struct HiddenWindow : EachTray {};
INSTANTIATE_TEST_SUITE_P(Tray, HiddenWindow, testing::Values(Tray::Bus, Tray::Docked, Tray::Mixed),
                         testing::PrintToStringParamName());

TEST_P(HiddenWindow, ComesBackByAClick) {
  Start();
  DismissBalloon();
  for (const bool bClose : {false, true}) {
    Hide(bClose);
    ClickIcon();
    EXPECT_TRUE(Eventually([] { return IsInFront(); })) << bClose;
  }
  Hide(false);
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(2));
  DismissBalloon();
  ASSERT_TRUE(BalloonsBecome(3));
  if (m_eTray != Tray::Docked) User("LetNotificationExpire");
  ExpectQuiet(500ms);
  EXPECT_FALSE(HasWindow(sMainWindow));
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(4));
  ClickBalloon();
  EXPECT_TRUE(Eventually([] { return IsInFront(); }));
  EndProgram();
}

TEST_P(EachTray, MenuQuitsWithoutAQuestion) {
  Start();
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(2));
  Command("xdotool mousemove 600 400");
  OpenMenu();
  const auto menu = Menu();
  ASSERT_TRUE(menu);
  int x = -1, y = -1;
  const std::string sMouse = Command("xdotool getmouselocation 2>/dev/null");
  ASSERT_EQ(std::sscanf(sMouse.c_str(), "x:%d y:%d", &x, &y), 2) << sMouse;
  // It opens to the right and below, or where there is place on the screen.
  EXPECT_THAT(x - menu->x, testing::AllOf(testing::Ge(-2), testing::Le(menu->nWidth + 2)));
  EXPECT_THAT(y - menu->y, testing::AllOf(testing::Ge(-2), testing::Le(menu->nHeight + 2)));
  const std::size_t nBefore = Reports().size();
  ASSERT_TRUE(BalloonsBecome(3));
  EXPECT_TRUE(Menu());
  EXPECT_TRUE(Eventually([&] { return Reports().size() == nBefore + 1; }));
  EXPECT_EQ(Reports().back(), centred);  // the signal is lost with the menu open as without
  Command("xdotool key q");
  ExpectEnded();
}

TEST_P(EachTray, MenuThatIsLeftChangesNothingAndReturnChoosesToo) {
  Start();
  Hide(false);
  OpenMenu();
  Command("xdotool key Escape");
  ASSERT_TRUE(Eventually([] { return !Menu(); }));
  ExpectQuiet(500ms);  // and so the next click is no double click
  EXPECT_FALSE(HasWindow(sMainWindow));
  ExpectServesDatagrams();
  OpenMenu();
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
  ExpectQuiet(500ms);  // and so the next click is no double click
  if (m_eTray == Tray::Bus)
    StartHost();
  else
    StartTrayer();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); })) << m_process->Errors();
  OpenMenu();
  EndProgram();
  ExpectEnded();
}

/// A second start, also where there is neither tray nor bus.
struct SecondCopy : EachTray {};
INSTANTIATE_TEST_SUITE_P(Tray, SecondCopy, testing::Values(Tray::None, Tray::Bus, Tray::Docked),
                         testing::PrintToStringParamName());

TEST_P(SecondCopy, BringsTheWindowToTheFront) {
  Start();
  const ChildProcess other(m_folder, "display",
                           {"-title", "About Quillorbit", "-size", "900x700", "xc:grey"});
  const auto coverWindow = [] {
    ASSERT_TRUE(WindowAppears("^About Quillorbit$"));
    Command("xdotool search --name 'About Quillorbit' windowactivate");
    ASSERT_TRUE(Eventually([] {
      return Command("xdotool getactivewindow getwindowname 2>/dev/null") == "About Quillorbit\n";
    }));
  };
  enum class Before { Covered, Minimised, Closed };
  for (const bool bSignal : {false, true})
    for (const Before eBefore : {Before::Covered, Before::Minimised, Before::Closed}) {
      SCOPED_TRACE(testing::Message() << bSignal << static_cast<int>(eBefore));
      if (eBefore != Before::Covered) Hide(eBefore == Before::Closed);
      coverWindow();
      if (bSignal) Send(motion);
      const std::size_t nReports = Reports().size();
      ChildProcess second(m_folder, m_program, {});
      EXPECT_EQ(second.Wait(), 0);
      EXPECT_EQ(second.Output() + second.Errors(), "");
      EXPECT_TRUE(Eventually([] { return IsInFront(); }));
      EXPECT_LE(Reports().size(), nReports + 1);  // the signal may have been lost
      ASSERT_TRUE(WindowAppears(sNoSignal));
    }
  EXPECT_TRUE(HasWindow("^About Quillorbit$"));
  EndProgram();
}

TEST_F(TrayTest, CopiesStartedAtOnceLeaveOneRunning) {
  StartTray(Tray::Bus);
  StartDriver();
  for (int i = 0; i < 3; ++i) {
    StartProgram();
    ChildProcess other(m_folder, m_program, {});
    ASSERT_TRUE(Eventually([&] { return !m_process->IsRunning() || !other.IsRunning(); }));
    ChildProcess& left = m_process->IsRunning() ? *m_process : other;
    ChildProcess& ended = m_process->IsRunning() ? other : *m_process;
    EXPECT_EQ(ended.Wait(), 0);
    EXPECT_EQ(ended.Output() + ended.Errors(), "");
    ASSERT_TRUE(WindowAppears(sNoSignal));
    EXPECT_EQ(Heard("item registered").size(), static_cast<std::size_t>(i) + 1);
    EXPECT_TRUE(left.IsRunning());
    left.Signal(SIGKILL);  // the next ones start all the same
    EXPECT_EQ(left.Wait(), 128 + SIGKILL);
    EXPECT_TRUE(Eventually([&] { return !HasIcon(); }));
  }
}

TEST_F(TrayTest, TextsOfTheProfileReachTheDesktop) {
  const char* sTexts =
      "<msg6>&lt;b&gt;Kein&lt;/b&gt; Signal &amp; so</msg6><msg7>Schlu\xC3\x9F</msg7>";
  WriteProfile("<quillorbit_profile><port>" + std::to_string(m_nPort) + "</port>" + sTexts +
               "</quillorbit_profile>");
  m_eTray = Tray::Bus;
  StartBus();
  StartHost({"--markup"});
  StartDriver();
  StartProgram();
  ASSERT_TRUE(Eventually([&] { return Tip() == "Quillorbit - <b>Kein</b> Signal & so"; }));
  ASSERT_TRUE(BalloonsBecome(1));
  EXPECT_THAT(LastHeard("notification "),
              testing::StartsWith("Quillorbit|&lt;b&gt;Kein&lt;/b&gt; Signal &amp; so|"));
  User("ListMenu");
  ASSERT_TRUE(Eventually([&] { return LastHeard("menu ") == "_Schlu\xC3\x9F"; }));
  User("ClickMenu string:_Schlu\xC3\x9F");  // in the menu that the desktop shows
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
  const std::array<std::function<void()>, 3> restarts = {restartHost, restartBus, restartBus};
  for (const auto& restart : restarts) {
    restart();
    ASSERT_TRUE(Eventually([&] { return Tip() == "Quillorbit - No signal"; }));
    EXPECT_THAT(Heard("item "), testing::ElementsAre("registered"));
    EXPECT_EQ(Balloons(), 0U);
    Send(motion);
    EXPECT_TRUE(BalloonsBecome(1));
    EXPECT_TRUE(BalloonsBecome(2));
    Hide(false);
    ClickIcon();
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
    Hide(false);
    ClickBalloon();
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
  }
  OpenMenu();
  Command("xdotool key q");
  ExpectEnded();
}

TEST_F(TrayTest, IconComesWithTheTrayWheneverThatComes) {
  StartAll();
  ASSERT_TRUE(WindowAppears(sNoSignal));
  m_eTray = Tray::Docked;
  for (int i = 0; i < 2; ++i) {
    StartTrayer();
    ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
    Hide(false);
    ClickIcon();
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
    m_trayer->Signal(SIGKILL);
    EXPECT_EQ(m_trayer->Wait(), 128 + SIGKILL);
    ExpectServesDatagrams();
    ASSERT_TRUE(WindowAppears(sNoSignal));
  }
  EndProgram();
}

TEST_F(TrayTest, SilentNotificationDaemonCostsItsBalloonsOnly) {
  m_eTray = Tray::Bus;
  StartBus();
  StartHost({"--silent"});
  StartAll();
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(WindowAppears(sNoSignal));
    ExpectServesDatagrams();
    EXPECT_TRUE(Eventually([&] { return Tip() == "Quillorbit"; }, 2s));
  }
  Hide(false);
  ClickIcon();
  EXPECT_TRUE(Eventually([] { return IsInFront(); }, 2s));
  EndProgram();
  ExpectEnded();
}

TEST_F(TrayTest, HostThatHangsGetsItsIconWhenItIsBack) {
  m_eTray = Tray::Bus;
  StartBus();
  StartHost({"--without-notifications"});
  m_host->Signal(SIGSTOP);
  StartAll();
  ASSERT_TRUE(WindowAppears(sNoSignal));
  ExpectServesDatagrams();
  m_host->Signal(SIGCONT);
  EXPECT_TRUE(Eventually([&] { return HasIcon(); }));
  EndProgram();
}

TEST_F(TrayTest, StoppedProgramGoesOnWithoutAFloodOfBalloons) {
  StartWithTray(Tray::Bus);
  auto transmission = Transmission();
  ASSERT_TRUE(BalloonsBecome(2));
  const auto stop = [&] {
    m_process->Signal(SIGSTOP);
    std::this_thread::sleep_for(2s);
    m_process->Signal(SIGCONT);
  };
  stop();  // the phone goes on meanwhile
  const std::size_t nReports = Reports().size();
  ASSERT_TRUE(Eventually([&] { return Reports().size() > nReports + 50; }));
  EXPECT_LE(Balloons(), 3U);
  const std::size_t nBalloons = Balloons();
  transmission = {};
  stop();
  EXPECT_TRUE(BalloonsBecome(nBalloons + 1));
  ExpectQuiet(1200ms);
  EndProgram();
}

}  // namespace
}  // namespace quillorbit::test
