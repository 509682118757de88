#pragma once

#include <gmock/gmock.h>
#include <memory>
#include <span>

#include "intake/MotionData.h"
#include "joystick/JoystickReport.h"
#include "platform/linux/process/file_descriptor.h"
#include "support/virtual_display.h"

namespace quillorbit::test {

/// Holds a UDP port, or a free one for port 0. It does nothing when the port is held already.
struct PortHolder {
  explicit PortHolder(int nPort = 0);
  linux_adapter::FileDescriptor fd;
  int nPort;
};

/// A desktop of its own for one test: an X server without a screen, a window manager, a runtime
/// folder, the user-space driver, and a copy of the program in a folder of its own, without the
/// model. It has no tray, and nobody is at the address of its session bus.
class Desktop : public testing::Test {
 protected:
  static constexpr const char* sMainWindow = "^Quillorbit( - No signal)?$";

  Desktop();
  /// Ends a program that still runs.
  void TearDown() override;

  /// Starts the driver, which records every report.
  void StartDriver();
  void WriteProfile(std::string_view sContent) const { WriteFile(m_profile, sContent); }
  [[nodiscard]] bool ProfileContains(const std::string& sText) const;
  /// Starts the program, through a shell command if one is given.
  void StartProgram(const std::vector<std::string>& through = {});
  /// Starts driver and program and waits for the window.
  void StartAll();
  /// Expects a second copy to end at once and to bring the window to the front.
  void StartSecondCopy() const;
  /// Ends the program as the end of the session does, and expects it to end in order.
  void EndProgram();

  /// What a shell command prints; empty when it cannot be started.
  static std::string Command(const std::string& sCommand);

  /// Waits for a visible window whose title matches; false when none comes.
  [[nodiscard]] static bool WindowAppears(const std::string& sTitle);
  [[nodiscard]] static bool HasWindow(const std::string& sTitle);
  [[nodiscard]] static bool IsActive(const std::string& sTitle);
  /// Presses keys, by xdotool's names, in a window that it waits for and puts in front.
  static void Press(const std::string& sWindow, const std::string& sKeys);
  /// Likewise in a box that the keys close: returns when it is gone.
  static void Answer(const std::string& sBox, const std::string& sKeys);
  /// Minimises the window and waits until it is gone.
  static void Minimise();
  /// Closes the window, whose title says that there is no signal, and waits for the question.
  static void AskToClose();

  void Send(const MotionData& motion) const { Send(motion.ToBytes()); }
  void Send(std::span<const std::byte> datagram) const;
  /// The reports that the driver has recorded.
  [[nodiscard]] std::vector<JoystickReport> Reports() const;
  /// Whether datagrams to the port reach the driver before long.
  [[nodiscard]] bool Listens() const;

  TemporaryFolder m_folder;
  std::string m_sBusAddress = "unix:path=" + (m_folder / "bus").string();
  std::filesystem::path m_program = m_folder / "quillorbit";
  std::filesystem::path m_profile = m_folder / "quillorbit.setup";
  int m_nPort = PortHolder().nPort;
  std::unique_ptr<ChildProcess> m_driver, m_process;
  VirtualDisplay m_display{m_folder};
};

}  // namespace quillorbit::test
