#include <chrono>
#include <csignal>
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

struct TrayTest : TrayDesktop {
  bool BalloonsBecome(std::size_t nBalloons) {
    return Eventually([&] { return Balloons() >= nBalloons; }) && Balloons() == nBalloons;
  }
};

struct EachTray : TrayTest, testing::WithParamInterface<Tray> {
  /// Starts all and waits for the signal to be missed, and for the icon.
  void Start() {
    m_eTray = GetParam();
    if (m_eTray == Tray::Docked) {
      StartTrayer();
    } else {
      StartBus();
      StartHost();
    }
    StartAll();
    ASSERT_TRUE(WindowAppears("^Quillorbit - No signal$"));
    ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
    ASSERT_TRUE(BalloonsBecome(1));
  }
};
INSTANTIATE_TEST_SUITE_P(Tray, EachTray, testing::Values(Tray::Bus, Tray::Docked),
                         [](const auto& tray) {
                           return tray.param == Tray::Bus ? "Bus" : "Docked";
                         });

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

TEST_P(EachTray, ClickAloneBringsTheHiddenWindowBack) {
  Start();
  EndBalloon(false);
  Minimise();
  ClickIcon();
  EXPECT_TRUE(Eventually([] { return IsActive(sMainWindow); }));
  AskToClose();
  Answer("^Quillorbit$", "Right Return");
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(2));
  EndBalloon(false);
  OpenMenu();
  ASSERT_TRUE(BalloonsBecome(3));  // the signal is lost with the menu open as without
  EXPECT_TRUE(Menu());
  CloseMenu();
  if (m_eTray == Tray::Bus) EndNotification("NotificationClosed uint32:1");
  std::this_thread::sleep_for(500ms);  // and so the next click is no double click
  EXPECT_FALSE(HasWindow(sMainWindow));
  Send(motion);
  ASSERT_TRUE(BalloonsBecome(4));
  EndBalloon(true);
  EXPECT_TRUE(Eventually([] { return IsActive(sMainWindow); }));
  OpenMenu();  // the program ends in order with the menu open
}

TEST_P(EachTray, MenuOutlivesItsTrayAndQuitsWhateverIsOpen) {
  Start();
  OpenMenu();
  m_host.reset();
  m_trayer.reset();
  EXPECT_TRUE(Listens());
  CloseMenu();
  AskToClose();
  m_eTray == Tray::Bus ? StartHost() : StartTrayer();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); })) << m_process->Errors();
  OpenMenu();
  Command("xdotool key Down Return");
  EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
}

TEST_F(TrayTest, SilentServicesGiveWayToATrayThatEmbeds) {
  StartBus();
  StartHost({"--silent"});
  StartTrayer();
  StartAll();
  EXPECT_TRUE(Eventually([] { return DockedIcon().has_value(); }, 3s));
  EXPECT_TRUE(Listens());
  EXPECT_TRUE(Eventually([&] { return Balloons() > Heard("Notify").size(); }));  // beside the icon
}

TEST_F(TrayTest, TextsOfTheProfileReachTheDesktop) {
  WriteProfile("<quillorbit_profile><port>" + std::to_string(m_nPort) +
               "</port><msg6>&lt;br&gt;&lt;br&gt;Kein Signal &amp; so</msg6></quillorbit_profile>");
  m_eTray = Tray::Bus;
  StartBus();
  StartHost();
  StartAll();
  ASSERT_TRUE(BalloonsBecome(1));
  EXPECT_THAT(LastHeard("Notify"), HasSubstr("\"&lt;br&gt;&lt;br&gt;Kein Signal &amp; so\""));
  EXPECT_THAT(LastHeard("ToolTip"), HasSubstr("\"Quillorbit - <br><br>Kein Signal & so\""));
  m_host.reset();
  StartTrayer();
  m_eTray = Tray::Docked;
  EXPECT_NE(Tip(), "");  // a tip of one line
}

TEST_F(TrayTest, BusThatNeverAnswersOrEndsIsAsGoodAsNone) {
  StartBus();
  StartHost();
  StartTrayer();
  m_bus->Signal(SIGSTOP);
  StartDriver();
  StartProgram();
  ASSERT_TRUE(Eventually([] { return HasWindow(sMainWindow); }, 3s));
  EXPECT_TRUE(Eventually([] { return DockedIcon().has_value(); }, 3s));
  EXPECT_TRUE(Listens());
  m_bus->Signal(SIGCONT);
  m_eTray = Tray::Bus;
  EXPECT_TRUE(Eventually([&] { return HasIcon() && !DockedIcon(); }, 3s));
  m_bus->Signal(SIGTERM);
  EXPECT_EQ(m_bus->Wait(), 0);
  EXPECT_TRUE(Listens());
  m_host.reset();
  StartBus();
  StartHost();
  ASSERT_TRUE(Eventually([&] { return HasIcon(); }));
  EXPECT_TRUE(Listens());
  EXPECT_TRUE(Eventually([&] { return !Heard("Notify").empty(); }));
  m_bus->Signal(SIGSTOP);
  EXPECT_TRUE(Listens());
  m_process->Signal(SIGTERM);
  EXPECT_TRUE(Eventually([&] { return !m_process->IsRunning(); }, 2s));
  EXPECT_EQ(m_process->Wait(), 0);
}

}  // namespace
}  // namespace quillorbit::test
