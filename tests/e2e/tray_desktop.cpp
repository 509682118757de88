#include "e2e/tray_desktop.h"

#include <chrono>
#include <functional>
#include <sstream>

namespace quillorbit::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* sRegister = "RegisterStatusNotifierItem";
constexpr const char* sTooltipType = "_NET_WM_WINDOW_TYPE_TOOLTIP";
constexpr const char* sDockedType = "_KDE_NET_WM_WINDOW_TYPE_OVERRIDE";
/// A tip has a line of text, a balloon at least two.
constexpr int nTipHeight = 40;

std::vector<ScreenWindow> Find(const std::function<bool(const ScreenWindow&)>& condition) {
  std::vector<ScreenWindow> windows = WindowsOnScreen();
  std::erase_if(windows, [&](const ScreenWindow& window) { return !condition(window); });
  return windows;
}

/// The toolkit's own windows have no title, and so the program's name.
bool IsUntitled(const ScreenWindow& window) { return window.sTitle == "quillorbit"; }

std::vector<ScreenWindow> Tooltips(bool bBalloons) {
  return Find([&](const ScreenWindow& window) {
    return IsUntitled(window) && window.sType == sTooltipType &&
           (window.nHeight >= nTipHeight) == bBalloons;
  });
}

}  // namespace

void TrayDesktop::StartBus() {
  WriteFile(m_folder / "bus.conf",
            "<busconfig><type>session</type><auth>EXTERNAL</auth><listen>" + m_sBusAddress +
                "</listen>"
                "<policy context=\"default\"><allow send_destination=\"*\"/>"
                "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
  m_bus.reset(new ChildProcess(
      m_folder, "dbus-daemon",
      {"--config-file=" + (m_folder / "bus.conf").string(), "--nofork", "--print-address"}));
  ASSERT_TRUE(Eventually([&] { return m_bus->Output().ends_with('\n'); })) << m_bus->Errors();
}

void TrayDesktop::StartHost(const std::vector<std::string>& arguments) {
  m_host = std::make_unique<ChildProcess>(m_folder, QUILLORBIT_STATUS_HOST, arguments);
  ASSERT_TRUE(Eventually([&] { return m_host->Output().starts_with("ready"); }));
}

void TrayDesktop::StartTrayer() {
  m_trayer.reset(new ChildProcess(m_folder, "trayer",
                                  {"--edge", "bottom", "--align", "right", "--widthtype", "request",
                                   "--heighttype", "request"}));
}

std::vector<std::string> TrayDesktop::Heard(const std::string& sName) const {
  std::vector<std::string> found;
  std::istringstream lines(m_host ? m_host->Output() : "");
  for (std::string sLine; std::getline(lines, sLine);)
    if (sLine.starts_with(sName + ' ')) found.push_back(sLine.substr(sName.size() + 1));
  return found;
}

std::string TrayDesktop::LastHeard(const std::string& sName) const {
  const auto lines = Heard(sName);
  return lines.empty() ? "" : lines.back();
}

void TrayDesktop::Call(const std::string& sService, const std::string& sCall) {
  const std::string sReply =
      Command("dbus-send --session --print-reply --dest=" + sService + " " + sCall + " 2>&1");
  EXPECT_TRUE(sReply.starts_with("method return")) << sReply;
}

void TrayDesktop::CallItem(const std::string& sMethod) const {
  const std::string sRegistered = LastHeard(sRegister);
  const std::size_t nQuote = sRegistered.find('"', 2);
  ASSERT_NE(nQuote, std::string::npos) << sRegistered;
  Call(sRegistered.substr(2, nQuote - 2),  // behind ("
       "/StatusNotifierItem org.kde.StatusNotifierItem." + sMethod + " int32:0 int32:0");
}

void TrayDesktop::EndNotification(const std::string& sSignal) {
  Call("org.quillorbit.User", "/ org.quillorbit.User." + sSignal);
}

std::optional<ScreenWindow> TrayDesktop::DockedIcon() {
  const auto icons = Find(
      [](const ScreenWindow& window) { return IsUntitled(window) && window.sType == sDockedType; });
  return icons.empty() ? std::nullopt : std::optional(icons.front());
}

std::optional<ScreenWindow> TrayDesktop::Menu() {
  const auto menus = Find([](const ScreenWindow& window) {
    return IsUntitled(window) && window.sType != sTooltipType && window.sType != sDockedType;
  });
  return menus.empty() ? std::nullopt : std::optional(menus.front());
}

void TrayDesktop::Mouse(const ScreenWindow& window, int x, int nFromBottom,
                        const std::string& sThen) {
  Command("xdotool mousemove " + std::to_string(window.x + window.nWidth / 2 + x) + " " +
          std::to_string(window.y + window.nHeight - nFromBottom) + " " + sThen);
}

bool TrayDesktop::HasIcon() const {
  return m_eTray == Tray::Bus ? !LastHeard(sRegister).empty() : DockedIcon().has_value();
}

std::string TrayDesktop::Icon() const {
  if (m_eTray == Tray::Bus) return LastHeard("IconPixmap");
  const auto icon = DockedIcon();
  // A balloon may cover the upper part.
  return icon ? Picture(*icon, icon->nHeight - icon->nHeight / 3, icon->nHeight) : "";
}

std::string TrayDesktop::Tip() {
  if (m_eTray == Tray::Bus) return LastHeard("ToolTip");
  std::vector<ScreenWindow> tips;
  EXPECT_TRUE(Eventually([&] {
    // Moves in quick succession are one to the toolkit, and one alone only enters the icon.
    if (const auto icon = DockedIcon())
      for (const int nPlace : {5, 4, 3}) Mouse(*icon, -nPlace, nPlace, "sleep 0.1");
    return Eventually([&] { return !(tips = Tooltips(false)).empty(); }, 2s);
  }));
  Command("xdotool mousemove 5 5");
  EXPECT_TRUE(Eventually([] { return Tooltips(false).empty(); }));
  return tips.empty() ? "" : std::to_string(tips.front().nWidth);
}

void TrayDesktop::ClickIcon() {
  if (m_eTray == Tray::Bus) return CallItem("Activate");
  const auto icon = DockedIcon();
  ASSERT_TRUE(icon);
  Mouse(*icon, 0, 3, "mousedown 1 sleep 0.3");
  EXPECT_FALSE(HasWindow(sMainWindow));
  Command("xdotool mouseup 1 mousemove 5 5");
}

void TrayDesktop::OpenMenu() {
  const auto icon = DockedIcon();
  if (m_eTray == Tray::Bus)
    CallItem("ContextMenu");
  else if (icon)
    Mouse(*icon, 0, 3, "click 3");
  ASSERT_TRUE(Eventually([] { return Menu().has_value(); }));
}

void TrayDesktop::CloseMenu() {
  Command("xdotool key Escape");
  ASSERT_TRUE(Eventually([] { return !Menu(); }));
}

std::size_t TrayDesktop::Balloons() {
  for (const ScreenWindow& window : Tooltips(true)) m_balloonWindows.insert(window.nId);
  return m_balloonWindows.size() + Heard("Notify").size();
}

void TrayDesktop::EndBalloon(bool bClick) {
  if (m_eTray == Tray::Bus)
    return EndNotification(bClick ? "ActionInvoked string:default" : "NotificationClosed uint32:2");
  ASSERT_TRUE(Eventually([] { return !Tooltips(true).empty(); }));
  Mouse(Tooltips(true).front(), 0, 40, bClick ? "click 1" : "click 3");
  EXPECT_TRUE(Eventually([] { return Tooltips(true).empty(); }));
}

}  // namespace quillorbit::test
