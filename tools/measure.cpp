#include "tools/measure.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include <poll.h>

#include "platform/linux/process/runtime_folder.h"
#include "tools/driver_socket.h"
#include "tools/send_schedule.h"
#include "tools/udp_sender.h"

namespace quillorbit::tools {
namespace {

/// Not quite level: the program's own report of a lost signal is centred, and must not be taken
/// for the answer to a probe. Z is no filtered axis, so it comes through unchanged.
constexpr MotionData probe{lAxisCentre, lAxisCentre, lAxisCentre - 1, lAxisCentre, 0};

class Measurement {
 public:
  Measurement(const SendOptions& options, StopSignal& stop)
      : m_wait(Seconds(options.dWait)),
        m_settle(Seconds(options.dSettle)),
        m_stop(stop),
        m_schedule(options),
        m_sender(options.sHost, options.nPort),
        m_driver(linux_adapter::RuntimeFolder()) {}

  LatencyLog Run() {
    m_driver.Listen();
    std::cerr << "quillorbit-send: waiting for quillorbit to open the device\n";
    AwaitProgram();
    AwaitAnswer();
    SendAll();
    AwaitStragglers();
    return std::move(m_log);
  }

 private:
  static Clock::duration Seconds(double dSeconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(dSeconds));
  }

  void AwaitProgram() {
    const Clock::time_point deadline = Clock::now() + m_wait;
    while (!m_bConnected) {
      if (Clock::now() >= deadline)
        throw std::runtime_error("no program has opened the device in time");
      ReceiveUntil(deadline);
      FailIfStopped();
    }
  }

  /// Probes until one is answered, and then for as long as the program may settle.
  void AwaitAnswer() {
    const Clock::time_point deadline = Clock::now() + m_wait;
    while (!m_bAnswered) {
      if (Clock::now() >= deadline)
        throw std::runtime_error("no report has come for the datagrams sent to the port");
      Probe();
    }
    for (const Clock::time_point settled = Clock::now() + m_settle; Clock::now() < settled;)
      Probe();
  }

  void Probe() {
    const Clock::time_point next = Clock::now() + std::chrono::milliseconds(50);
    m_sender.Send(probe);
    while (Clock::now() < next && (!m_bAnswered || m_settle.count() > 0)) {
      ReceiveUntil(next);
      FailIfStopped();
    }
  }

  void SendAll() {
    for (m_schedule.Begin(); !m_schedule.Ended() && !m_stop.Received(); m_schedule.Advance()) {
      while (Clock::now() < m_schedule.Due()) {
        ReceiveUntil(m_schedule.Due());
        if (m_stop.Received()) return;
      }
      MotionData motion = m_schedule.Motion();
      motion.b = static_cast<std::int32_t>(m_log.Sent() + 1);
      const Clock::time_point time = Clock::now();
      if (m_sender.Send(motion)) m_log.Sent(time);
    }
  }

  /// The stop that may have ended the sending does not end this; a further one does.
  void AwaitStragglers() {
    m_stop.Forget();
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(2);
    while (m_log.Lost() > 0 && Clock::now() < deadline && !m_stop.Received())
      ReceiveUntil(deadline);
  }

  /// Takes what arrives until the deadline, and returns after each batch.
  void ReceiveUntil(Clock::time_point deadline) {
    if (!m_stop.WaitFor(m_driver.Fd(), POLLIN, deadline)) return;
    while (true) {
      const DriverEvent event = m_driver.Next();
      const Clock::time_point time = Clock::now();
      if (event.kind == DriverEvent::Kind::nothing) return;
      Handle(event, time);
    }
  }

  void Handle(const DriverEvent& event, Clock::time_point time) {
    if (event.kind == DriverEvent::Kind::clientConnected) m_bConnected = true;
    if (event.kind == DriverEvent::Kind::clientDisconnected)
      throw std::runtime_error("the program has closed the device");
    if (event.kind != DriverEvent::Kind::report) return;
    // Number 0 marks the answers to probes and what the program sends by itself.
    if (event.report.b != 0) m_log.Arrived(event.report.b, time);
    m_bAnswered = m_bAnswered || (event.report.b == 0 && event.report.z == probe.z);
  }

  void FailIfStopped() const {
    if (m_stop.Received()) throw std::runtime_error("interrupted before the measurement began");
  }

  const Clock::duration m_wait, m_settle;
  StopSignal& m_stop;
  SendSchedule m_schedule;
  UdpSender m_sender;
  DriverSocket m_driver;
  LatencyLog m_log;
  bool m_bConnected = false;
  bool m_bAnswered = false;
};

}  // namespace

LatencyLog Measure(const SendOptions& options, StopSignal& stop) {
  return Measurement(options, stop).Run();
}

}  // namespace quillorbit::tools
