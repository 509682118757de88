#pragma once

#include <set>

#include "fakes/call_log.h"
#include "platform/udp_socket.h"

namespace quillorbit::fakes {

struct FakeUdpSocket : Fake<UdpSocket> {
  FakeUdpSocket(CallLog& l, const std::set<i32>& held) : Fake(l, "sckUDP"), heldPorts(held) {}
  void Protocol(SocketProtocol e) override { Call(__func__, static_cast<int>(e)); }
  void Bind(i32 lPort) override {
    Call(__func__, lPort);
    if (lPort < 1 || lPort > 65535 || lBound != 0 || heldPorts.contains(lPort))
      throw std::system_error(std::make_error_code(std::errc::address_in_use));
    lBound = lPort;
  }
  std::size_t GetData(std::span<std::byte> data) override {
    if (bReadFails) throw std::system_error(std::make_error_code(std::errc::io_error));
    std::copy_n(pending.begin(), std::min(data.size(), pending.size()), data.begin());
    return pending.size();
  }
  void Close() override { lBound = Answer(0, __func__); }

  void Arrive(std::span<const std::byte> datagram) {
    pending = datagram;
    DataArrival();
  }

  const std::set<i32>& heldPorts;
  std::span<const std::byte> pending;
  i32 lBound = 0;  ///< 0: not bound
  bool bReadFails = false;
};

struct FakeUdpSockets : Fake<UdpSockets> {
  using Fake::Fake;
  Own<UdpSocket> NewUdpSocket() override {
    auto socket = std::make_unique<FakeUdpSocket>(log, heldPorts);
    pSocket = socket.get();
    return socket;
  }

  std::set<i32> heldPorts;  ///< by other programs
  FakeUdpSocket* pSocket = nullptr;
};

}  // namespace quillorbit::fakes
