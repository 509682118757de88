#pragma once

#include "platform/code_page.h"
#include "platform/device.h"
#include "platform/dx8vb.h"
#include "platform/fonts.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "platform/shell.h"
#include "platform/toolkit.h"
#include "platform/top_level_windows.h"
#include "platform/udp_socket.h"
#include "platform/xml_document.h"

namespace quillorbit::platform {

/// Every service that the program needs from its platform. An adapter fills it once, in `main`; all
/// services are used on the user-interface thread only, and outlive the program's main window.
struct Platform {
  Toolkit& toolkit;
  Shell& shell;
  TopLevelWindows& windows;
  UdpSockets& udpSockets;
  DeviceFunctions& device;
  XmlLibrary& xml;
  Process& process;
  Resources& resources;
  CodePage& codePage;
  Fonts& fonts;
  DX8VB& dx8vb;
};

}  // namespace quillorbit::platform
