// The program on Linux: the one place that chooses this adapter.

#include <cstdio>
#include <exception>
#include <string>

#include "app/frmMain.h"
#include "platform/linux/desktop/top_level_windows.h"
#include "platform/linux/graphics/dx8vb.h"
#include "platform/linux/joystick/device.h"
#include "platform/linux/network/udp_socket.h"
#include "platform/linux/process/code_page.h"
#include "platform/linux/process/process.h"
#include "platform/linux/process/resources.h"
#include "platform/linux/profile/xml_document.h"
#include "platform/linux/tray/shell.h"
#include "platform/linux/tray/toolkit_bus.h"
#include "platform/linux/window/fonts.h"
#include "platform/linux/window/toolkit.h"

int main(int argc, char** argv) {
  using namespace quillorbit;
  try {
    linux_adapter::LinuxProcess process(argc, argv);  // before the toolkit takes its arguments out
    linux_adapter::LinuxResources resources;
    const std::string sBusAddress = linux_adapter::KeepSessionBusFromToolkit();
    linux_adapter::LinuxToolkit toolkit(argc, argv, resources);
    linux_adapter::ServeScreenReaders();
    // The driver loads beside the steps that follow. Earlier, the toolkit's libraries would have to
    // wait for the driver's.
    const auto contexts = std::make_shared<linux_adapter::GlContexts>();
    linux_adapter::LinuxShell shell(toolkit, resources, sBusAddress);
    linux_adapter::LinuxTopLevelWindows windows(
        [&toolkit](auto... icon) { toolkit.SetIcon(icon...); });
    linux_adapter::LinuxUdpSockets udpSockets;
    linux_adapter::LinuxDevice device;
    linux_adapter::LinuxXmlLibrary xml;
    linux_adapter::LinuxCodePage codePage;
    linux_adapter::LinuxFonts fonts([] { return qApp->devicePixelRatio(); });
    linux_adapter::LinuxDX8VB dx8vb(fonts, contexts);
    platform::Platform platform{toolkit, shell,     windows,  udpSockets, device, xml,
                                process, resources, codePage, fonts,      dx8vb};

    frmMain main(platform);
    main.Form_Load();
    return toolkit.Run();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quillorbit: %s\n", failure.what());
    return 1;
  }
}
