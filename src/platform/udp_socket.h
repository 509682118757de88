#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/event.h"

namespace quillorbit::platform {

enum class SocketProtocol { TCP = 0, UDP = 1 };

/// The UDP socket component. Failures throw std::system_error.
class UdpSocket {
 public:
  virtual ~UdpSocket() = default;

  virtual void Protocol(SocketProtocol eProtocol) = 0;
  /// Binds to the port on every local address, for this program alone, and begins to raise
  /// DataArrival. Throws for a port outside 1..65535 or one that any other program holds on any
  /// local address, and for a socket that is bound already.
  virtual void Bind(std::int32_t lLocalPort) = 0;
  /// Takes the pending datagram, as much of it as fits, and returns its whole length, which can be
  /// 0 and can be more than fits. Throws when none is pending.
  virtual std::size_t GetData(std::span<std::byte> data) = 0;
  /// Also for a socket that is not bound. What is pending is dropped.
  virtual void Close() = 0;

  Event<> DataArrival;  ///< one datagram is pending; raised once for each, in their order
};

class UdpSockets {
 public:
  virtual ~UdpSockets() = default;
  [[nodiscard]] virtual std::unique_ptr<UdpSocket> NewUdpSocket() = 0;
};

}  // namespace quillorbit::platform
