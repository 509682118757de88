#pragma once

#include "fakes/code_page.h"
#include "fakes/device.h"
#include "fakes/dx8vb.h"
#include "fakes/fonts.h"
#include "fakes/process.h"
#include "fakes/resources.h"
#include "fakes/shell.h"
#include "fakes/toolkit.h"
#include "fakes/top_level_windows.h"
#include "fakes/udp_socket.h"
#include "fakes/xml_document.h"
#include "intake/MotionData.h"
#include "platform/platform.h"

namespace quillorbit::fakes {

/// The third adapter: a platform that records what the program asks of it, and on which a test
/// raises the events.
struct FakePlatform {
  // Out of line, so that the fakes are compiled once and not with every test.
  FakePlatform();
  ~FakePlatform();

  CallLog log;
  FakeToolkit toolkit{log};
  FakeShell shell{log};
  FakeTopLevelWindows windows{log};
  FakeUdpSockets udpSockets{log};
  FakeDevice device{log};
  FakeXmlLibrary xml{log};
  FakeProcess process{log};
  FakeResources resources{log};
  FakeCodePage codePage;
  FakeFonts fonts{log};
  FakeDX8VB dx8vb{log};
  platform::Platform services{toolkit, shell,     windows,  udpSockets, device, xml,
                              process, resources, codePage, fonts,      dx8vb};

  FakeForm& Window() { return *toolkit.pMain; }
  FakeForm& Tray() { return *toolkit.pTray; }
  FakeTimer& tmrCheck() { return *Window().timers.at(0); }
  FakeTimer& tmrCheck2() { return *Window().timers.at(1); }
  FakeUdpSocket& Socket() { return *udpSockets.pSocket; }

  /// A control by its name; throws when there is none of that name and kind.
  template <class FakeKind>
  FakeKind& Get(const std::string& sName) {
    return dynamic_cast<FakeKind&>(*toolkit.registry.byName.at(sName));
  }
  std::string Caption(const std::string& sLabel) { return Get<FakeLabel>(sLabel).sCaption; }

  void Arrive(const MotionData& motion) { Socket().Arrive(motion.ToBytes()); }

  /// Puts a profile of these elements where the program looks for it.
  void StoreProfile(const std::vector<std::pair<std::string, std::string>>& elements,
                    const std::string& sRoot = "quillorbit_profile");
  /// The text of an element of the profile as it was last written.
  std::string StoredElement(const std::string& sName);

  static constexpr const char* sProfile = "C:\\Games\\Quillorbit.setup";
};

}  // namespace quillorbit::fakes
