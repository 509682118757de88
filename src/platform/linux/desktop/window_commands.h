#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include <QAbstractNativeEventFilter>
#include <QObject>

namespace quillorbit::linux_adapter {

// How one copy of the program commands another one's windows. A window that its own program did
// not show stays empty, so the command is sent to that program, as a ClientMessage that names the
// window and carries the command. Windows that accept commands have a property of the same name.

inline constexpr std::string_view sWindowCommandsAtom = "_QUILLORBIT_COMMANDS";

enum class WindowCommand : std::uint32_t { Show = 1, Restore = 2, Foreground = 3 };

/// Gives a window of this program its window class, and marks it as one that takes commands. To be
/// called before it is first shown. Without an X server behind the toolkit it does nothing.
void MarkWindow(std::uint32_t window, std::string_view sClass);

/// Asks the window manager to bring a window of this program to the front, in the user's name.
/// Without an X server behind the toolkit it does nothing.
void ActivateWindow(std::uint32_t window);

/// Receives the commands for windows of this program, and passes each on from the event loop. To be
/// created after the QApplication.
class WindowCommands final : public QAbstractNativeEventFilter {
 public:
  using Handler = std::function<void(std::uint32_t window, WindowCommand eCommand)>;

  explicit WindowCommands(Handler onCommand);

 private:
  bool nativeEventFilter(const QByteArray& eventType, void* pMessage, qintptr* pResult) override;

  Handler m_onCommand;
  std::uint32_t m_atom = 0;
  QObject m_context;  ///< commands that are pending when it is destroyed are dropped
};

}  // namespace quillorbit::linux_adapter
