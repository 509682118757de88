#include <chrono>
#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <thread>

#include "e2e/tray_desktop.h"

namespace quillorbit::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr MotionData motion{.x = 75, .y = 75, .z = 42, .zr = 75, .b = 1};
constexpr const char* sNoSignal = "^Quillorbit - No signal$";

struct TrayTest : TrayDesktop {
  /// Starts all and waits for the signal to be missed, and for the icon.
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
  void ExpectSecondCopyBringsTheWindowToTheFront() {
    ChildProcess second(m_folder, m_program, {});
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(second.Output() + second.Errors(), "");
    EXPECT_TRUE(Eventually([] { return IsInFront(); }));
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
  for (int i = 0; i < 15; ++i) {
    Send(motion);
    std::this_thread::sleep_for(50ms);
  }
  EXPECT_TRUE(BalloonsBecome(2));
  EXPECT_NE(Icon(), sLostIcon);
  EXPECT_TRUE(BalloonsBecome(3));
  EXPECT_TRUE(Eventually([&] { return Icon() == sLostIcon && Tip() == sLostTip; }));
  std::this_thread::sleep_for(1200ms);
  EXPECT_EQ(Balloons(), 3U);
  EndProgram();
  if (m_eTray != Tray::Bus) return;
  EXPECT_THAT(sLostIcon, HasSubstr("[Argument: (iiay) 16, 16, {"));
  EXPECT_THAT(sLostTip, HasSubstr(", \"Quillorbit - No signal\", \"\""));
  EXPECT_THAT(Heard("ToolTip"), testing::Contains(HasSubstr(", \"Quillorbit\", \"\"")));
  const std::string sLost =
      "\"dialog-warning\", \"Quillorbit\", \"No signal\", {\"default\", \"Open\"}";
  const std::string sBack =
      "\"dialog-information\", \"Quillorbit\", \"Mobile transmitting\", {\"default\", \"Open\"}";
  EXPECT_THAT(Heard("Notify"), ElementsAre(StartsWith("(\"Quillorbit\", 0, " + sLost),
                                           StartsWith("(\"Quillorbit\", 1, " + sBack),
                                           StartsWith("(\"Quillorbit\", 1, " + sLost)));
  EXPECT_TRUE(Eventually([&] { return LastHeard("CloseNotification").starts_with("(1)"); }));
}

struct HiddenWindow : EachTray {};
INSTANTIATE_TEST_SUITE_P(Tray, HiddenWindow, testing::Values(Tray::Bus, Tray::Docked, Tray::Mixed),
                         testing::PrintToStringParamName());

TEST_P(HiddenWindow, ComesBackByAClickOnly) {
  Start();
  EndBalloon(false);
  ExpectClickBringsTheWindowBack();
  Hide(true);
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(2));
  EndBalloon(false);
  OpenMenu();
  ASSERT_TRUE(BalloonsBecome(3));  // the signal is lost with the menu open as without
  EXPECT_TRUE(Menu());
  CloseMenu();
  if (m_eTray != Tray::Docked) EndNotification("NotificationClosed uint32:1");
  std::this_thread::sleep_for(500ms);  // and so the next click is no double click
  EXPECT_FALSE(HasWindow(sMainWindow));
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(4));
  EndBalloon(true);
  EXPECT_TRUE(Eventually([] { return IsInFront(); }));
  OpenMenu();
  EndProgram();
}

TEST_P(EachTray, MenuOutlivesItsTrayAndQuitsWhateverIsOpen) {
  Start();
  OpenMenu();
  m_host.reset();
  m_trayer.reset();
  ExpectServesDatagrams();
  CloseMenu();
  AskToClose();
  m_eTray == Tray::Bus ? StartHost() : StartTrayer();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); })) << m_process->Errors();
  OpenMenu();
  Command("xdotool key Down Return");
  EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
}

TEST_F(TrayTest, SecondCopyAndLateTrayBringTheWindowBack) {
  StartWithTray(Tray::None);
  const ChildProcess other(m_folder, "display",
                           {"-title", "About Quillorbit", "-size", "900x700", "xc:grey"});
  ASSERT_TRUE(WindowAppears("^About Quillorbit$"));
  ASSERT_TRUE(Eventually([] {
    Command("xdotool search --name 'About Quillorbit' windowactivate");
    return !IsInFront();
  }));
  ExpectSecondCopyBringsTheWindowToTheFront();
  Hide(false);
  ExpectSecondCopyBringsTheWindowToTheFront();
  m_eTray = Tray::Docked;
  StartTrayer();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
  Hide(true);
  ExpectSecondCopyBringsTheWindowToTheFront();
  ExpectClickBringsTheWindowBack();
}

TEST_F(TrayTest, TextsOfTheProfileReachTheDesktop) {
  WriteProfile("<quillorbit_profile><port>" + std::to_string(m_nPort) +
               "</port><msg6>&lt;b&gt;Kein&lt;/b&gt; Signal &amp; so</msg6>"
               "<msg7>Schlu\xC3\x9F_</msg7></quillorbit_profile>");
  m_eTray = Tray::Bus;
  StartBus();
  StartHost({"--markup"});
  StartAll();
  ASSERT_TRUE(BalloonsBecome(1));
  EXPECT_THAT(LastHeard("Notify"), HasSubstr("\"&lt;b&gt;Kein&lt;/b&gt; Signal &amp; so\""));
  EXPECT_THAT(LastHeard("ToolTip"), HasSubstr("\"Quillorbit - <b>Kein</b> Signal & so\""));
  const std::string sMenu = "/MenuBar com.canonical.dbusmenu.";
  EXPECT_THAT(CallItem(sMenu + "GetLayout int32:0 int32:-1 array:string:"),
              HasSubstr("\"_Schlu\xC3\x9F__\""));
  CallItem(sMenu + "Event int32:1 string:clicked variant:int32:0 uint32:0");
  EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
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

TEST_F(TrayTest, SilentServicesGiveWayToATrayThatEmbeds) {
  StartBus();
  StartHost({"--silent"});
  StartTrayer();
  StartAll();
  EXPECT_TRUE(Eventually([] { return DockedIcon().has_value(); }, 3s));
  ExpectServesDatagrams();
  EXPECT_TRUE(Eventually([&] { return Balloons() > Heard("Notify").size(); }));  // beside the icon
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
  m_eTray = Tray::Bus;
  EXPECT_TRUE(Eventually([&] { return HasIcon() && !DockedIcon(); }, 3s));
  m_bus->Signal(SIGSTOP);
  ExpectServesDatagrams();
  m_process->Signal(SIGTERM);
  EXPECT_TRUE(Eventually([&] { return !m_process->IsRunning(); }, 2s));
  EXPECT_EQ(m_process->Wait(), 0);
}

}  // namespace
}  // namespace quillorbit::test
