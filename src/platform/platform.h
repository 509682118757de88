#pragma once

#include "platform/device.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "platform/toolkit.h"
#include "platform/udp_socket.h"
#include "platform/xml_document.h"

namespace quillorbit::platform {

/// Every service that the program asks of its platform. An adapter fills it once, in `main`; all
/// services are used on the user-interface thread and outlive the program's main window.
struct Platform {
  Toolkit& toolkit;
  UdpSockets& udpSockets;
  DeviceFunctions& device;
  XmlLibrary& xml;
  Process& process;
  Resources& resources;
};

}  // namespace quillorbit::platform
