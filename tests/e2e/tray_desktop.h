#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "e2e/desktop.h"
#include "e2e/screen.h"

namespace quillorbit::test {

/// Where the desktop shows the program's icon and its balloons.
enum class Tray {
  None,
  Bus,     ///< both by a service on the session bus
  Docked,  ///< in a tray that embeds windows; there is no session bus
  Mixed,   ///< the icon in such a tray, the balloons by a service on the session bus
};
void PrintTo(Tray eTray, std::ostream* pStream);

/// A desktop with a tray.
class TrayDesktop : public Desktop {
 protected:
  void StartTray(Tray eTray);
  void StartBus();
  /// Starts the services of status_host.cpp.
  void StartHost(const std::vector<std::string>& arguments = {});
  void StartTrayer();

  /// What the services have said: all lines that begin so, without their beginning.
  [[nodiscard]] std::vector<std::string> Heard(const std::string& sBeginning) const;
  [[nodiscard]] std::string LastHeard(const std::string& sBeginning) const;
  /// Does what the user would do to the item or a notification, by its name in status_host.cpp.
  static void User(const std::string& sAction);

  [[nodiscard]] bool HasIcon() const;
  [[nodiscard]] static std::optional<ScreenWindow> DockedIcon();
  /// The icon's picture, to be compared.
  [[nodiscard]] std::string Icon() const;
  /// The tip: its text, or its width where it is a window.
  [[nodiscard]] std::string Tip();
  /// Clicks the icon; where it is docked, nothing may happen until the button is released.
  void ClickIcon();
  /// Presses the right button on the icon and waits for the menu.
  void OpenMenu();
  [[nodiscard]] static std::optional<ScreenWindow> Menu();

  /// How many balloons there have been. To be asked again and again where they are windows.
  [[nodiscard]] std::size_t Balloons();
  /// Clicks a balloon, or closes it.
  void EndBalloon(bool bClick);

  /// Whether the main window is there, normal, active and above other programs' windows.
  [[nodiscard]] static bool IsInFront();
  /// Minimises the window, or closes it and answers No, and waits until it is gone.
  void Hide(bool bClose);

  Tray m_eTray = Tray::None;
  std::unique_ptr<ChildProcess> m_bus, m_host, m_trayer;

 private:
  /// Moves the mouse to a place of a window, from its middle and its bottom, and goes on.
  static void Mouse(const ScreenWindow& window, int x, int nFromBottom, const std::string& sThen);

  std::set<std::uint32_t> m_balloonWindows;  ///< all that have been seen
};

}  // namespace quillorbit::test
