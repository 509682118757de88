#include "platform/linux/tray/session_bus.h"

#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace quillorbit::linux_adapter {
namespace {

constexpr std::chrono::seconds retryInterval(2);
/// More messages than this wait only when the bus has stopped reading.
constexpr std::uint64_t nMostQueued = 100;

using Handler = SessionBus::Handler;

int RunHandler(sd_bus_message* pMessage, void* pHandler, sd_bus_error*) {
  (*static_cast<Handler*>(pHandler))(pMessage);
  return 0;
}

/// Lets the slot, which lives until its call is answered or the connection ends, own the handler.
void Own(sd_bus_slot* pSlot, std::unique_ptr<Handler> handler) {
  sd_bus_slot_set_destroy_callback(pSlot, [](void* p) { delete static_cast<Handler*>(p); });
  sd_bus_slot_set_floating(pSlot, 1);
  sd_bus_slot_unref(pSlot);
  static_cast<void>(handler.release());
}

}  // namespace

bool IsError(sd_bus_message* pReply) {
  return pReply == nullptr || sd_bus_message_is_method_error(pReply, nullptr) > 0;
}

SessionBus::SessionBus(std::string sAddress) : m_sAddress(std::move(sAddress)) {
  sd_event* pEvent = nullptr;
  if (const int nResult = sd_event_new(&pEvent); nResult < 0)
    throw std::system_error(-nResult, std::generic_category(), "sd_event_new");
  m_event.reset(pEvent);
  m_notifier = std::make_unique<QSocketNotifier>(sd_event_get_fd(pEvent), QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, this, &SessionBus::Run);
  m_retry.setSingleShot(true);
  QObject::connect(&m_retry, &QTimer::timeout, this, &SessionBus::Connect);
  Connect();
}

SessionBus::~SessionBus() = default;

void SessionBus::Connect() {
  m_bAbsent = m_sAddress.empty() || !Start(false);
  if (m_sAddress.empty()) return;
  // Where nothing listens, sd-bus watches for the socket.
  if (m_bAbsent && !Start(true)) m_retry.start(retryInterval);
  RunSoon();
}

bool SessionBus::Start(bool bWatch) {
  sd_bus* pBus = nullptr;
  if (sd_bus_new(&pBus) < 0) return false;
  m_bus.reset(pBus);
  if (sd_bus_set_address(pBus, m_sAddress.c_str()) >= 0 && sd_bus_set_bus_client(pBus, 1) >= 0 &&
      sd_bus_set_trusted(pBus, 1) >= 0 && sd_bus_set_watch_bind(pBus, bWatch ? 1 : 0) >= 0 &&
      sd_bus_attach_event(pBus, m_event.get(), SD_EVENT_PRIORITY_NORMAL) >= 0 &&
      sd_bus_start(pBus) >= 0)
    return true;
  m_bus.reset();
  return false;
}

/// One event at a time, so that a bus that floods the program leaves the other events their turn.
void SessionBus::Run() {
  m_bRunRequested = false;
  if (!m_bus) return;
  if (sd_event_run(m_event.get(), 0) > 0) RunSoon();
  std::uint64_t nQueued = 0;
  sd_bus_get_n_queued_write(m_bus.get(), &nQueued);
  if (sd_bus_is_open(m_bus.get()) <= 0 || nQueued > nMostQueued) {
    Disconnect();
    m_retry.start(retryInterval);
    emit Lost();
  } else if (!m_bConnected && sd_bus_is_ready(m_bus.get()) > 0) {
    m_bConnected = true;
    m_bAbsent = false;
    emit Connected();
  }
}

/// Calls made from the event loop change what sd-bus waits for.
void SessionBus::RunSoon() {
  if (!std::exchange(m_bRunRequested, true))
    QMetaObject::invokeMethod(this, &SessionBus::Run, Qt::QueuedConnection);
}

void SessionBus::Disconnect() {
  m_bConnected = false;
  m_bus.reset();
}

void SessionBus::Close() {
  Disconnect();
  m_retry.stop();
}

BusMessage SessionBus::NewCall(const char* sService, const char* sPath, const char* sInterface,
                               const char* sMethod) {
  sd_bus_message* pCall = nullptr;
  sd_bus_message_new_method_call(m_bus.get(), &pCall, sService, sPath, sInterface, sMethod);
  return BusMessage(pCall);
}

void SessionBus::Call(BusMessage call, Handler onReply, std::uint64_t usLimit) {
  auto handler = std::make_unique<Handler>(std::move(onReply));
  sd_bus_slot* pSlot = nullptr;
  if (sd_bus_call_async(m_bus.get(), &pSlot, call.get(), &RunHandler, handler.get(), usLimit) < 0)
    return (*handler)(nullptr);
  Own(pSlot, std::move(handler));
  RunSoon();
}

void SessionBus::Call(BusMessage call) {
  sd_bus_message_set_expect_reply(call.get(), 0);
  sd_bus_send(m_bus.get(), call.get(), nullptr);
  RunSoon();
}

void SessionBus::Subscribe(const std::string& sMatch, Handler onSignal) {
  auto handler = std::make_unique<Handler>(std::move(onSignal));
  sd_bus_slot* pSlot = nullptr;
  // A bus that refuses is left; that is what no install handler means.
  if (sd_bus_add_match_async(m_bus.get(), &pSlot, sMatch.c_str(), &RunHandler, nullptr,
                             handler.get()) >= 0)
    Own(pSlot, std::move(handler));
  RunSoon();
}

void SessionBus::Export(const char* sPath, const char* sInterface, const sd_bus_vtable* pTable,
                        void* pObject) {
  sd_bus_add_object_vtable(m_bus.get(), nullptr, sPath, sInterface, pTable, pObject);
}

const char* SessionBus::Name() {
  const char* sName = "";
  sd_bus_get_unique_name(m_bus.get(), &sName);
  return sName;
}

}  // namespace quillorbit::linux_adapter
