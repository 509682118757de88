#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <system_error>
#include <vector>

#include "fakes/call_log.h"
#include "platform/udp_socket.h"

namespace quillorbit::fakes {

class FakeUdpSocket : public platform::UdpSocket {
 public:
  FakeUdpSocket(CallLog& log, const std::set<std::int32_t>& heldPorts)
      : m_log(log), m_heldPorts(heldPorts) {}

  void Protocol(platform::SocketProtocol e) override {
    m_log.Call("sckUDP.Protocol = ", static_cast<int>(e));
  }
  void Bind(std::int32_t lPort) override {
    m_log.Call("sckUDP.Bind ", lPort);
    if (lPort < 1 || lPort > 65535 || lBound != 0)
      throw std::system_error(EINVAL, std::generic_category());
    if (m_heldPorts.contains(lPort)) throw std::system_error(EADDRINUSE, std::generic_category());
    lBound = lPort;
  }
  std::size_t GetData(std::span<std::byte> data) override {
    if (bReadFails) throw std::system_error(EIO, std::generic_category());
    std::copy_n(m_pending.begin(), std::min(data.size(), m_pending.size()), data.begin());
    return m_pending.size();
  }
  void Close() override {
    m_log.Call("sckUDP.Close");
    lBound = 0;
  }

  void Arrive(std::span<const std::byte> datagram) {
    m_pending = datagram;
    DataArrival();
  }

  std::int32_t lBound = 0;  ///< 0: not bound
  bool bReadFails = false;

 private:
  CallLog& m_log;
  const std::set<std::int32_t>& m_heldPorts;
  std::span<const std::byte> m_pending;
};

class FakeUdpSockets : public platform::UdpSockets {
 public:
  explicit FakeUdpSockets(CallLog& log) : m_log(log) {}
  std::unique_ptr<platform::UdpSocket> NewUdpSocket() override {
    auto socket = std::make_unique<FakeUdpSocket>(m_log, heldPorts);
    pSocket = socket.get();
    return socket;
  }

  std::set<std::int32_t> heldPorts;  ///< by other programs
  FakeUdpSocket* pSocket = nullptr;

 private:
  CallLog& m_log;
};

}  // namespace quillorbit::fakes
