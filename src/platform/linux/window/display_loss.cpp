#include "platform/linux/window/display_loss.h"

#include <cstdio>
#include <thread>
#include <utility>

#include <QString>
#include <QtGlobal>
#include <xcb/xcb.h>

#include "platform/linux/desktop/x11.h"
#include "platform/linux/process/end_at_once.h"

namespace quillorbit::linux_adapter {
namespace {

QtMessageHandler passOn = nullptr;
std::thread::id toolkitThread;
std::function<void()> whatToClose;

bool IsDisplayLost() {
  if (xcb_connection_t* const pConnection = x11::ToolkitConnection())
    return xcb_connection_has_error(pConnection) != 0;
  return !ConnectDisplay();  // the toolkit is about to open it, or has closed it
}

/// The toolkit ends the process with exit() after a warning, and with abort() after a fatal
/// message.
void TakeMessage(QtMsgType eType, const QMessageLogContext& context, const QString& sMessage) {
  const bool bMine = std::this_thread::get_id() == toolkitThread;
  const bool bLost = bMine && IsDisplayLost();
  if (!bLost) passOn(eType, context, sMessage);
  if (!bLost && !(bMine && eType == QtFatalMsg)) return;
  if (const auto close = std::exchange(whatToClose, nullptr)) close();
  if (bLost) std::fputs("quillorbit: the display is gone\n", stderr);
  EndAtOnce(1);
}

}  // namespace

void Disconnect::operator()(xcb_connection_t* pConnection) const { xcb_disconnect(pConnection); }

DisplayConnection ConnectDisplay() {
  DisplayConnection connection(xcb_connect(nullptr, nullptr));
  if (xcb_connection_has_error(connection.get()) != 0) connection.reset();
  return connection;
}

void ForestallExitOfToolkit() {
  toolkitThread = std::this_thread::get_id();
  passOn = qInstallMessageHandler(&TakeMessage);
}

DisplayLoss::DisplayLoss(std::function<void()> closeDown) { whatToClose = std::move(closeDown); }

DisplayLoss::~DisplayLoss() { whatToClose = nullptr; }

}  // namespace quillorbit::linux_adapter
