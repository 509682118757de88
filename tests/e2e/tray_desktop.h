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
  Bus,     ///< both are the business of a process on the session bus
  Docked,  ///< in a tray that takes windows; there is no session bus
  Mixed,   ///< in such a tray, and balloons are notifications on the session bus
};

void PrintTo(Tray eTray, std::ostream* pStream);

/// A desktop with a tray.
class TrayDesktop : public Desktop {
 protected:
  void StartTray(Tray eTray);
  void StartBus();
  /// Starts what hosts the item and shows notifications, see status_host.cpp.
  void StartHost(const std::vector<std::string>& arguments = {});
  void StartTrayer();

  /// What the host has said: all lines that begin so, without their beginning.
  [[nodiscard]] std::vector<std::string> Heard(const std::string& sBeginning) const;
  /// The last of them.
  [[nodiscard]] std::string LastHeard(const std::string& sBeginning) const;
  /// Does what the user would do to the item or a notification, by its name in status_host.cpp.
  static void User(const std::string& sAction);

  [[nodiscard]] bool HasIcon() const;
  /// The icon's picture, to be compared.
  [[nodiscard]] std::string Icon() const;
  /// The tip: its text, or its width where it is a window.
  [[nodiscard]] std::string Tip();
  void ClickIcon();
  /// Presses the right button on the icon and waits for the menu.
  void OpenMenu();
  [[nodiscard]] static std::optional<ScreenWindow> Menu();

  /// How many balloons there have been. To be asked again and again where they are windows.
  [[nodiscard]] std::size_t Balloons();
  void ClickBalloon();
  void DismissBalloon();

  /// Whether the main window is there, normal, active and above other programs' windows.
  [[nodiscard]] static bool IsInFront();
  /// Minimises the window, or closes it and answers No, and waits until it is gone.
  void Hide(bool bClose);
  /// A phone that sends as long as this exists.
  [[nodiscard]] std::jthread Transmission() const;

  Tray m_eTray = Tray::None;
  std::unique_ptr<ChildProcess> m_bus;
  std::unique_ptr<ChildProcess> m_host;
  std::unique_ptr<ChildProcess> m_trayer;

 private:
  [[nodiscard]] static std::optional<ScreenWindow> DockedIcon();
  [[nodiscard]] static std::vector<ScreenWindow> BalloonWindows();
  static void ClickOn(const ScreenWindow& window, int nFromBottom, int nButton);

  std::set<std::uint32_t> m_balloonWindows;  ///< all that have been seen
};

}  // namespace quillorbit::test
