#pragma once

#include <functional>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

namespace quillorbit::linux_adapter {

struct BusUnref {
  void operator()(sd_event* pEvent) const { sd_event_unref(pEvent); }
  void operator()(sd_bus* pBus) const { sd_bus_close_unref(pBus); }
  void operator()(sd_bus_message* pMessage) const { sd_bus_message_unref(pMessage); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusUnref>;

/// Whether that is what a handler gets of a call that failed.
[[nodiscard]] bool IsError(sd_bus_message* pReply);

/// A connection to the session bus, served by the event loop of the thread that made it. Nothing
/// here waits: a bus that accepts and never answers is one that is not connected yet. A bus that is
/// lost, or comes only later, is connected when it is there.
class SessionBus final : public QObject {
  Q_OBJECT

 public:
  /// Gets the reply of a call, or the signal that arrived. A call that failed gets an error message
  /// or null when it could not be sent (IsError).
  using Handler = std::function<void(sd_bus_message* pMessage)>;

  /// The address is as in DBUS_SESSION_BUS_ADDRESS; an empty one is of no bus.
  explicit SessionBus(std::string sAddress);
  ~SessionBus() override;

  [[nodiscard]] bool IsConnected() const { return m_bConnected; }
  /// Whether it is known that nothing listens at the address.
  [[nodiscard]] bool IsAbsent() const { return m_bAbsent; }
  /// Disconnects for good, without waiting for what has not been sent yet.
  void Close();

  // The rest is for a bus that is connected, and ends with the connection.

  [[nodiscard]] BusMessage NewCall(const char* sService, const char* sPath, const char* sInterface,
                                   const char* sMethod);
  static constexpr std::uint64_t usDefault = 0;           ///< sd-bus's limit, 25 s
  static constexpr std::uint64_t usNoLimit = UINT64_MAX;  ///< an answer counts however late
  /// Sends a call. The handler runs unless the connection is lost first; a limit is in
  /// microseconds.
  void Call(BusMessage call, Handler onReply, std::uint64_t usLimit = usDefault);
  /// Sends a call whose reply nobody needs.
  void Call(BusMessage call);
  /// Has the bus deliver the signals that a match rule describes.
  void Subscribe(const std::string& sMatch, Handler onSignal);
  /// Makes an object callable at a path, as long as the connection and the object last.
  void Export(const char* sPath, const char* sInterface, const sd_bus_vtable* pTable,
              void* pObject);
  /// The arguments are as sd_bus_message_append() takes them.
  template <class... Arguments>
  void Emit(const char* sPath, const char* sInterface, const char* sSignal, const char* sTypes = "",
            Arguments... arguments) {
    sd_bus_emit_signal(m_bus.get(), sPath, sInterface, sSignal, sTypes, arguments...);
    RunSoon();
  }
  /// The connection's name on the bus.
  [[nodiscard]] const char* Name();

 signals:
  void Connected();
  void Lost();  ///< also when it turns out to be absent

 private:
  void Connect();
  bool Start(bool bWatch);
  void Run();
  void RunSoon();
  void Disconnect();

  std::string m_sAddress;
  bool m_bConnected = false;
  bool m_bAbsent = false;
  bool m_bRunRequested = false;
  std::unique_ptr<sd_event, BusUnref> m_event;
  std::unique_ptr<sd_bus, BusUnref> m_bus;
  std::unique_ptr<QSocketNotifier> m_notifier;
  QTimer m_retry;
};

}  // namespace quillorbit::linux_adapter
