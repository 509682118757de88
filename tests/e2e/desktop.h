#pragma once

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "intake/MotionData.h"
#include "joystick/JoystickReport.h"
#include "platform/linux/process/file_descriptor.h"
#include "support/child_process.h"
#include "support/virtual_display.h"

namespace quillorbit::test {

/// A desktop of its own for one test: an X server without a screen, a window manager, a runtime
/// folder, the user-space driver, and a copy of the program in a folder of its own. It has no tray,
/// and nobody is at the address of its session bus.
class Desktop : public testing::Test {
 protected:
  static constexpr const char* sMainWindow = "^Quillorbit( - No signal)?$";

  Desktop();
  ~Desktop() override;

  /// Starts the driver, which records every report.
  void StartDriver();
  static void WriteTo(const std::filesystem::path& file, std::string_view sContent);
  void WriteProfile(std::string_view sContent) const { WriteTo(m_profile, sContent); }
  [[nodiscard]] std::string Profile() const { return ReadFile(m_profile); }
  /// The text of the profile's element, as another XML reader sees it.
  [[nodiscard]] std::string ProfileElement(const std::string& sName) const;
  /// Starts the program, through a shell command if one is given.
  void StartProgram(const std::vector<std::string>& through = {});
  /// Starts driver and program and waits for the window.
  void StartAll();
  /// Ends the program as the end of the session does, and expects it to end in order.
  void EndProgram();

  /// What a shell command prints; empty when it cannot be started.
  static std::string Command(const std::string& sCommand);

  /// Waits for a visible window whose title matches; false when none comes.
  [[nodiscard]] static bool WindowAppears(const std::string& sTitle);
  [[nodiscard]] static bool HasWindow(const std::string& sTitle);
  /// Presses keys, by xdotool's names, in a window that it waits for and puts in front.
  static void Press(const std::string& sWindow, const std::string& sKeys);
  /// Likewise in a box that the keys close: returns when it is gone.
  static void Answer(const std::string& sBox, const std::string& sKeys);
  static void Minimise();
  /// Closes the window, whose title says that there is no signal, and waits for the question.
  static void AskToClose();
  /// Puts a text into the port box, which has the focus, and presses another key.
  static void EnterPort(const std::string& sPort, const std::string& sKey);
  /// Clicks at a place of the window, in pixels from its lower left corner.
  static void ClickFromBelow(int x, int y);

  void Send(const MotionData& motion) const { Send(m_nPort, motion.ToBytes()); }
  static void Send(int nPort, std::span<const std::byte> datagram);
  /// The reports that the driver has recorded.
  [[nodiscard]] std::vector<JoystickReport> Reports() const;

  TemporaryFolder m_folder;
  std::string m_sBusAddress = "unix:path=" + (m_folder / "bus").string();
  std::filesystem::path m_program = m_folder / "quillorbit";
  std::filesystem::path m_profile = m_folder / "quillorbit.setup";
  int m_nPort;
  std::unique_ptr<ChildProcess> m_driver;
  std::unique_ptr<ChildProcess> m_process;

 private:
  VirtualDisplay m_display{m_folder};
};

/// A UDP socket that holds a port, on one family of addresses alone.
class PortHolder {
 public:
  PortHolder(int nFamily, int nPort);
  [[nodiscard]] int Port() const { return m_nPort; }

 private:
  linux_adapter::FileDescriptor m_fd;
  int m_nPort;
};

}  // namespace quillorbit::test
