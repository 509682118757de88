#pragma once

#include <memory>
#include <set>

#include <QApplication>
#include <QSocketNotifier>

#include "platform/linux/desktop/window_commands.h"
#include "platform/linux/process/file_descriptor.h"
#include "platform/linux/process/resources.h"
#include "platform/linux/window/display_loss.h"
#include "platform/toolkit.h"

namespace quillorbit::linux_adapter {

class LinuxForm;

/// The window toolkit on Qt Widgets. There is one; everything that needs an event loop is created
/// after it and destroyed before it. SIGTERM, SIGINT and SIGHUP unload the forms, as the end of the
/// session does, and end the program.
class LinuxToolkit final : public platform::Toolkit {
 public:
  /// `argc` and `argv` are main()'s; `resources` has the windows' icons. Throws std::runtime_error,
  /// with a message for the user, when there is no display to open a window on.
  LinuxToolkit(int& argc, char** argv, LinuxResources& resources);
  ~LinuxToolkit() override;

  [[nodiscard]] std::unique_ptr<platform::Form> NewForm(
      const platform::FormDesign& design) override;
  platform::MsgBoxAnswer MsgBox(std::string_view sPrompt, std::uint32_t lFlags,
                                std::string_view sTitle) override;
  void Beep() override;
  int Run() override;
  void End() override;

  /// The loaded form with that handle; null when it is another program's window or was unloaded.
  [[nodiscard]] LinuxForm* FormOf(platform::WindowHandle hWnd) const;
  /// WM_SETICON for a form: the kind and the icon's handle.
  void SetIcon(platform::WindowHandle hWnd, std::uint32_t lKind, platform::IconHandle hIcon);

 private:
  void ConnectSignals();
  void EndOfSession();
  /// The window that a message box belongs to and blocks: the active one, or else any visible one.
  [[nodiscard]] QWidget* BoxOwner() const;

  LinuxResources& m_resources;
  DisplayConnection m_firstConnection;
  QApplication m_application;
  FileDescriptor m_signals;
  std::unique_ptr<QSocketNotifier> m_signalNotifier;
  std::set<LinuxForm*> m_loadedForms;
  WindowCommands m_windowCommands;
  bool m_bEnded = false;
};

}  // namespace quillorbit::linux_adapter
