#include "platform/linux/tray/toolkit_bus.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <private/qguiapplication_p.h>
#include <string_view>

#include <QObject>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* sSessionBus = "DBUS_SESSION_BUS_ADDRESS";
constexpr const char* sAccessibilityBus = "AT_SPI_BUS_ADDRESS";

std::string Variable(const char* sName) {
  const char* const sValue = std::getenv(sName);
  return sValue == nullptr ? "" : sValue;
}

/// A bus that is asked one question after the other, all of them in time or not at all.
class QuickBus {
 public:
  QuickBus(const std::string& sAddress, Clock::time_point deadline) : m_deadline(deadline) {
    sd_bus* pBus = nullptr;
    if (sd_bus_new(&pBus) < 0) return;
    m_bus.reset(pBus);
    if (sd_bus_set_address(pBus, sAddress.c_str()) < 0 || sd_bus_set_bus_client(pBus, 1) < 0 ||
        sd_bus_start(pBus) < 0)
      return;
    int nResult = 0;
    while (nResult >= 0 && !(m_bReady = sd_bus_is_ready(pBus) > 0) && usLeft() > 0)
      if (nResult = sd_bus_process(pBus, nullptr); nResult == 0)
        nResult = sd_bus_wait(pBus, usLeft());
  }

  /// Calls a method with texts as arguments. Null when there is no answer, or an error.
  template <class... Texts>
  BusMessage Ask(const char* sService, const char* sPath, const char* sInterface,
                 const char* sMethod, const std::string& sTypes, Texts... texts) {
    sd_bus_message* pCall = nullptr;
    sd_bus_message* pReply = nullptr;
    if (!m_bReady || usLeft() == 0) return nullptr;
    sd_bus_message_new_method_call(m_bus.get(), &pCall, sService, sPath, sInterface, sMethod);
    const BusMessage call(pCall);
    sd_bus_message_append(pCall, sTypes.c_str(), texts...);
    sd_bus_message_set_auto_start(pCall, 0);
    sd_bus_call(m_bus.get(), pCall, usLeft(), nullptr, &pReply);
    return BusMessage(pReply);
  }

 private:
  [[nodiscard]] std::uint64_t usLeft() const {
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(m_deadline - Clock::now());
    return left.count() > 0 ? static_cast<std::uint64_t>(left.count()) : 0;
  }

  Clock::time_point m_deadline;
  std::unique_ptr<sd_bus, BusUnref> m_bus;
  bool m_bReady = false;
};

/// The address of the screen readers' bus if one of them is in use, or else nothing.
std::string AccessibilityBus(const std::string& sAddress, Clock::time_point deadline) {
  QuickBus bus(sAddress, deadline);
  const auto isSet = [&bus](const char* sProperty) {
    const BusMessage reply =
        bus.Ask("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Get", "ss",
                "org.a11y.Status", sProperty);
    int bSet = 0;
    return reply && sd_bus_message_read(reply.get(), "v", "b", &bSet) > 0 && bSet != 0;
  };
  if (!isSet("IsEnabled") && !isSet("ScreenReaderEnabled")) return {};
  const BusMessage reply =
      bus.Ask("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", "");
  const char* sFound = "";
  if (reply) sd_bus_message_read(reply.get(), "s", &sFound);
  return sFound;
}

/// The toolkit waits for this service when it connects.
bool RegistryAnswers(const std::string& sAddress, Clock::time_point deadline) {
  return QuickBus(sAddress, deadline)
             .Ask("org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                  "org.freedesktop.DBus.Peer", "Ping", "") != nullptr;
}

}  // namespace

std::string KeepSessionBusFromToolkit() {
  std::string sAddress = Variable(sSessionBus);
  const std::string sFolder = Variable("XDG_RUNTIME_DIR");
  if (sAddress.empty() && !sFolder.empty()) sAddress = "unix:path=" + sFolder + "/bus";

  const auto deadline = Clock::now() + std::chrono::milliseconds(100);
  std::string sReaders = Variable(sAccessibilityBus);
  if (sReaders.empty() && !sAddress.empty()) sReaders = AccessibilityBus(sAddress, deadline);
  if (!sReaders.empty() && RegistryAnswers(sReaders, deadline))
    setenv(sAccessibilityBus, sReaders.c_str(), 1);
  else
    unsetenv(sAccessibilityBus);

  setenv(sSessionBus, "disabled:", 1);  // an address that fails at once
  return sAddress;
}

void ServeScreenReaders() {
  // Qt 6.4 connects to the bus that it is given and leaves accessibility off. Switching it on takes
  // Qt's private interface, which is that of the version this was built with only.
  if (Variable(sAccessibilityBus).empty() || std::string_view(qVersion()) != QT_VERSION_STR) return;
  const auto* const pIntegration = QGuiApplicationPrivate::platformIntegration();
  if (auto* const pBridge = dynamic_cast<QObject*>(pIntegration->accessibility()))
    QMetaObject::invokeMethod(pBridge, "enabledChanged", Q_ARG(bool, true));
}

}  // namespace quillorbit::linux_adapter
