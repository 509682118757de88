// The program on Linux: the one place that chooses this adapter.

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include <pthread.h>
#include <sched.h>

#include "app/frmMain.h"
#include "platform/linux/desktop/top_level_windows.h"
#include "platform/linux/graphics/dx8vb.h"
#include "platform/linux/joystick/device.h"
#include "platform/linux/network/udp_socket.h"
#include "platform/linux/process/code_page.h"
#include "platform/linux/process/end_at_once.h"
#include "platform/linux/process/process.h"
#include "platform/linux/process/resources.h"
#include "platform/linux/profile/xml_document.h"
#include "platform/linux/tray/shell.h"
#include "platform/linux/tray/toolkit_bus.h"
#include "platform/linux/window/display_loss.h"
#include "platform/linux/window/fonts.h"
#include "platform/linux/window/toolkit.h"
#include "platform/presentation/drawing_thread.h"

namespace {

/// An idle thread gives up its processor as soon as another's thread wants it; a low priority alone
/// would let it finish its time slice, some milliseconds. A batch thread takes it from nobody when
/// it wakes (sched(7)). Whoever waited for the processor at the change would wait on but for the
/// yield.
void StepBack(bool bBack) {
  const sched_param none{};
  sched_setscheduler(0, bBack ? SCHED_IDLE : SCHED_BATCH, &none);
  if (bBack) sched_yield();
}

void BeginDrawing() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
  pthread_setname_np(pthread_self(), "drawing");
  StepBack(false);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace quillorbit;
  int nStatus = 1;
  try {
    linux_adapter::LinuxProcess process(argc, argv);  // before the toolkit takes its arguments out
    linux_adapter::LinuxResources resources;
    const std::string sBusAddress = linux_adapter::KeepSessionBusFromToolkit();
    linux_adapter::LinuxToolkit toolkit(argc, argv, resources);
    linux_adapter::ServeScreenReaders();
    // The driver loads beside the steps that follow. Earlier, the toolkit's libraries would have to
    // wait for the driver's.
    const auto contexts = std::make_shared<linux_adapter::GlContexts>();
    linux_adapter::LinuxFonts fonts([] { return qApp->devicePixelRatio(); });
    // Ended when all else is done: a driver that hangs ends the process.
    presentation::DrawingThreads drawingThreads(
        {&BeginDrawing, &StepBack, [&] { linux_adapter::EndAtOnce(nStatus); }});
    linux_adapter::LinuxShell shell(toolkit, resources, sBusAddress);
    linux_adapter::LinuxTopLevelWindows windows(
        [&toolkit](auto... icon) { toolkit.SetIcon(icon...); });
    linux_adapter::LinuxUdpSockets udpSockets;
    linux_adapter::LinuxDevice device;
    linux_adapter::LinuxXmlLibrary xml;
    linux_adapter::LinuxCodePage codePage;
    linux_adapter::LinuxDX8VB dx8vb(fonts, contexts, drawingThreads);
    platform::Platform platform{toolkit, shell,     windows,  udpSockets, device, xml,
                                process, resources, codePage, fonts,      dx8vb};
    const linux_adapter::DisplayLoss displayLoss([&] {
      device.CloseAll();
      xml.FinishSaving();
    });

    frmMain main(platform);
    main.Form_Load();
    nStatus = toolkit.Run();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quillorbit: %s\n", failure.what());
  }
  return nStatus;
}
