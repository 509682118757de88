#include "platform/linux/desktop/window_commands.h"

#include <string>
#include <utility>

#include <QGuiApplication>

#include "platform/linux/desktop/x11.h"

namespace quillorbit::linux_adapter {
void MarkWindow(std::uint32_t window, std::string_view sClass) {
  xcb_connection_t* pConnection = x11::ToolkitConnection();
  if (pConnection == nullptr) return;
  // The instance's name and the class, each with its NUL.
  std::string sNames("quillorbit\0", 11);
  sNames += QString::fromUtf8(sClass.data(), static_cast<qsizetype>(sClass.size()))
                .toLatin1()
                .toStdString();
  sNames += '\0';
  xcb_change_property(pConnection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                      XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(sNames.size()), sNames.data());
  const std::uint32_t version = 1;
  xcb_change_property(pConnection, XCB_PROP_MODE_REPLACE, window,
                      x11::InternAtom(pConnection, sWindowCommandsAtom), XCB_ATOM_CARDINAL, 32, 1,
                      &version);
  xcb_flush(pConnection);
}

void ActivateWindow(std::uint32_t window) {
  xcb_connection_t* pConnection = x11::ToolkitConnection();
  if (pConnection != nullptr) x11::RequestActivation(pConnection, window);
}

WindowCommands::WindowCommands(Handler onCommand) : m_onCommand(std::move(onCommand)) {
  xcb_connection_t* pConnection = x11::ToolkitConnection();
  if (pConnection == nullptr) return;
  m_atom = x11::InternAtom(pConnection, sWindowCommandsAtom);
  qGuiApp->installNativeEventFilter(this);
}

bool WindowCommands::nativeEventFilter(const QByteArray& eventType, void* pMessage, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* pEvent = static_cast<const xcb_client_message_event_t*>(pMessage);
  constexpr int sentByAProgram = 0x80;
  if ((pEvent->response_type & ~sentByAProgram) != XCB_CLIENT_MESSAGE || pEvent->type != m_atom)
    return false;
  const auto eCommand = static_cast<WindowCommand>(pEvent->data.data32[0]);
  const bool bKnown = eCommand == WindowCommand::Show || eCommand == WindowCommand::Restore ||
                      eCommand == WindowCommand::Foreground;
  if (pEvent->format == 32 && bKnown) {
    QMetaObject::invokeMethod(
        &m_context, [this, window = pEvent->window, eCommand] { m_onCommand(window, eCommand); },
        Qt::QueuedConnection);
  }
  return true;
}

}  // namespace quillorbit::linux_adapter
