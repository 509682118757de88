#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "e2e/desktop.h"
#include "e2e/screen.h"

namespace quillorbit::test {

/// Where the desktop shows the program's icon and its balloons.
enum class Tray {
  Docked,  ///< in a tray that embeds windows
  Bus,     ///< both by a service on the session bus
};

/// A desktop with a tray.
class TrayDesktop : public Desktop {
 protected:
  void StartBus();
  /// Starts the services of status_host.cpp.
  void StartHost(const std::vector<std::string>& arguments = {});
  void StartTrayer();

  /// What follows a name in the lines that status_host has printed: the arguments of each call of
  /// that name, or each value of that property.
  [[nodiscard]] std::vector<std::string> Heard(const std::string& sName) const;
  [[nodiscard]] std::string LastHeard(const std::string& sName) const;
  /// Has the user do something to the last notification, by a signal of the notification service.
  static void EndNotification(const std::string& sSignal);

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
  /// Presses Escape in the menu and waits until it is gone.
  static void CloseMenu();
  [[nodiscard]] static std::optional<ScreenWindow> Menu();

  /// How many balloons there have been. To be asked again and again where they are windows.
  [[nodiscard]] std::size_t Balloons();
  /// Clicks a balloon, or closes it.
  void EndBalloon(bool bClick);

  Tray m_eTray = Tray::Docked;
  std::unique_ptr<ChildProcess> m_bus, m_host, m_trayer;

 private:
  /// Calls a method of the item for a place on the screen.
  void CallItem(const std::string& sMethod) const;
  /// Calls a method in the words of dbus-send.
  static void Call(const std::string& sService, const std::string& sCall);
  /// Moves the mouse to a place of a window, from its middle and its bottom, and goes on.
  static void Mouse(const ScreenWindow& window, int x, int nFromBottom, const std::string& sThen);

  std::set<std::uint32_t> m_balloonWindows;  ///< all that have been seen
};

}  // namespace quillorbit::test
