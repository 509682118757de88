#include "e2e/tray_desktop.h"

#include <array>
#include <chrono>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <thread>

namespace quillorbit::test {
namespace {

using namespace std::chrono_literals;

/// The toolkit's own windows have no title, and so the program's name.
constexpr const char* sUntitled = "quillorbit";
constexpr const char* sTooltipType = "_NET_WM_WINDOW_TYPE_TOOLTIP";
constexpr const char* sDockedType = "_KDE_NET_WM_WINDOW_TYPE_OVERRIDE";
/// A tip has a line of text, a balloon at least two.
constexpr int nTipHeight = 40;
/// Where to click, from the bottom: a balloon covers the upper part of its icon and ends in an
/// arrow.
constexpr int nIconPlace = 3;
constexpr int nBalloonPlace = 40;

std::vector<ScreenWindow> Find(const std::function<bool(const ScreenWindow&)>& condition) {
  std::vector<ScreenWindow> windows = WindowsOnScreen();
  std::erase_if(windows, [&](const ScreenWindow& window) { return !condition(window); });
  return windows;
}

std::vector<ScreenWindow> TipWindows() {
  return Find([](const ScreenWindow& window) {
    return window.sTitle == sUntitled && window.sType == sTooltipType &&
           window.nHeight < nTipHeight;
  });
}

}  // namespace

void PrintTo(Tray eTray, std::ostream* pStream) {
  *pStream << std::array{"None", "Bus", "Docked", "Mixed"}.at(static_cast<std::size_t>(eTray));
}

void TrayDesktop::StartTray(Tray eTray) {
  m_eTray = eTray;
  if (eTray == Tray::Bus || eTray == Tray::Mixed) StartBus();
  if (eTray == Tray::Bus) StartHost();
  if (eTray == Tray::Mixed) StartHost({"--without-items"});
  if (eTray == Tray::Docked || eTray == Tray::Mixed) StartTrayer();
}

void TrayDesktop::StartBus() {
  const std::string sConfiguration = m_folder / "bus.conf";
  // It knows no services that it could start.
  std::ofstream(sConfiguration) << "<busconfig><type>session</type><auth>EXTERNAL</auth><listen>"
                                << m_sBusAddress
                                << "</listen><policy context=\"default\">"
                                   "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/>"
                                   "<allow own=\"*\"/></policy></busconfig>";
  m_bus = std::make_unique<ChildProcess>(
      m_folder, "dbus-daemon",
      std::vector<std::string>{"--config-file=" + sConfiguration, "--nofork", "--print-address"});
  ASSERT_TRUE(Eventually([&] { return m_bus->Output().ends_with('\n'); })) << m_bus->Errors();
}

void TrayDesktop::StartHost(const std::vector<std::string>& arguments) {
  m_host = std::make_unique<ChildProcess>(m_folder, QUILLORBIT_STATUS_HOST, arguments);
  ASSERT_TRUE(Eventually([&] { return m_host->Output().starts_with("ready\n"); }))
      << m_host->Errors();
}

void TrayDesktop::StartTrayer() {
  m_trayer = std::make_unique<ChildProcess>(
      m_folder, "trayer",
      std::vector<std::string>{"--edge", "bottom", "--align", "right", "--widthtype", "request",
                               "--heighttype", "request"});
}

std::vector<std::string> TrayDesktop::Heard(const std::string& sBeginning) const {
  std::vector<std::string> found;
  std::istringstream lines(m_host ? m_host->Output() : "");
  for (std::string sLine; std::getline(lines, sLine);)
    if (sLine.starts_with(sBeginning)) found.push_back(sLine.substr(sBeginning.size()));
  return found;
}

std::string TrayDesktop::LastHeard(const std::string& sBeginning) const {
  const auto lines = Heard(sBeginning);
  return lines.empty() ? "" : lines.back();
}

void TrayDesktop::User(const std::string& sAction) {
  const std::string sReply = Command(
      "dbus-send --session --print-reply --dest=org.quillorbit.User / org.quillorbit.User." +
      sAction + " 2>&1");
  EXPECT_TRUE(sReply.starts_with("method return")) << sReply;
}

std::optional<ScreenWindow> TrayDesktop::DockedIcon() {
  const auto icons = Find([](const ScreenWindow& window) {
    return window.sTitle == sUntitled && window.sType == sDockedType;
  });
  return icons.empty() ? std::nullopt : std::optional(icons.front());
}

std::vector<ScreenWindow> TrayDesktop::BalloonWindows() {
  return Find([](const ScreenWindow& window) {
    return window.sTitle == sUntitled && window.sType == sTooltipType &&
           window.nHeight >= nTipHeight;
  });
}

std::optional<ScreenWindow> TrayDesktop::Menu() {
  const auto menus = Find([](const ScreenWindow& window) {
    return window.sTitle == sUntitled && window.sType != sTooltipType &&
           window.sType != sDockedType;
  });
  return menus.empty() ? std::nullopt : std::optional(menus.front());
}

void TrayDesktop::ClickOn(const ScreenWindow& window, int nFromBottom, int nButton) {
  Command("xdotool mousemove " + std::to_string(window.x + window.nWidth / 2) + " " +
          std::to_string(window.y + window.nHeight - nFromBottom) + " click " +
          std::to_string(nButton));
}

bool TrayDesktop::HasIcon() const {
  return m_eTray == Tray::Bus ? LastHeard("item ") == "registered" : DockedIcon().has_value();
}

std::string TrayDesktop::Icon() const {
  if (m_eTray == Tray::Bus) return LastHeard("icon ");
  const auto icon = DockedIcon();
  // A balloon may cover the upper part.
  return icon ? Picture(*icon, icon->nHeight - icon->nHeight / 3, icon->nHeight) : "";
}

std::string TrayDesktop::Tip() {
  if (m_eTray == Tray::Bus) return LastHeard("tooltip ");
  std::vector<ScreenWindow> tips;
  EXPECT_TRUE(Eventually([&] {
    // Moves in quick succession are one to the toolkit, and one alone only enters the icon.
    if (const auto icon = DockedIcon())
      for (const int nPlace : {5, 4, 3})
        Command("xdotool mousemove " + std::to_string(icon->x + nPlace) + " " +
                std::to_string(icon->y + icon->nHeight - nPlace) + " sleep 0.1");
    return Eventually([&] { return !(tips = TipWindows()).empty(); }, 2s);
  }));
  Command("xdotool mousemove 5 5");
  EXPECT_TRUE(Eventually([] { return TipWindows().empty(); }));
  return tips.empty() ? "" : std::to_string(tips.front().nWidth);
}

void TrayDesktop::ClickIcon() {
  if (m_eTray == Tray::Bus) return User("Activate");
  const auto icon = DockedIcon();
  ASSERT_TRUE(icon);
  ClickOn(*icon, nIconPlace, 1);
  Command("xdotool mousemove 5 5");
}

void TrayDesktop::OpenMenu() {
  if (m_eTray == Tray::Bus) {
    User("ContextMenu");
  } else {
    const auto icon = DockedIcon();
    ASSERT_TRUE(icon);
    ClickOn(*icon, nIconPlace, 3);
  }
  ASSERT_TRUE(Eventually([] { return Menu().has_value(); }));
}

std::size_t TrayDesktop::Balloons() {
  for (const ScreenWindow& window : BalloonWindows()) m_balloonWindows.insert(window.nId);
  return m_balloonWindows.size() + Heard("notification ").size();
}

void TrayDesktop::ClickBalloon() {
  if (m_eTray != Tray::Docked) return User("ClickNotification");
  ASSERT_TRUE(Eventually([] { return !BalloonWindows().empty(); }));
  ClickOn(BalloonWindows().front(), nBalloonPlace, 1);
}

void TrayDesktop::DismissBalloon() {
  if (m_eTray != Tray::Docked) return User("DismissNotification");
  ASSERT_TRUE(Eventually([] { return !BalloonWindows().empty(); }));
  ClickOn(BalloonWindows().front(), nBalloonPlace, 3);
  EXPECT_TRUE(Eventually([] { return BalloonWindows().empty(); }));
}

bool TrayDesktop::IsInFront() {
  const auto windows = Find([](const ScreenWindow& window) {
    return window.sType.empty() || window.sType == "_NET_WM_WINDOW_TYPE_NORMAL";
  });
  return !windows.empty() && std::regex_search(windows.back().sTitle, std::regex(sMainWindow)) &&
         Command("xdotool getactivewindow 2>/dev/null") ==
             std::to_string(windows.back().nId) + "\n";
}

void TrayDesktop::Hide(bool bClose) {
  if (bClose) {
    AskToClose();
    Answer("^Quillorbit$", "Right Return");
  } else {
    Minimise();
  }
  ASSERT_TRUE(Eventually([] { return !HasWindow(sMainWindow); }));
}

std::jthread TrayDesktop::Transmission() const {
  return std::jthread([this](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      Send({.x = 75, .y = 75, .z = 42, .zr = 75, .b = 1});
      std::this_thread::sleep_for(50ms);
    }
  });
}

}  // namespace quillorbit::test
