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
  /// Binds exclusively to the port on every local address, and begins to raise DataArrival. Throws
  /// for a port outside 1..65535, for one that another program uses on any local address, and for
  /// a socket that is bound already.
  virtual void Bind(std::int32_t lLocalPort) = 0;
  /// Reads the pending datagram, as much of it as fits, and returns its full length, which may be 0
  /// and may be more than fits. Throws when none is pending.
  virtual std::size_t GetData(std::span<std::byte> data) = 0;
  /// Closes the socket, bound or not. Pending datagrams are discarded.
  virtual void Close() = 0;

  Event<> DataArrival;  ///< one datagram is pending; raised once for each, in order of arrival
};

class UdpSockets {
 public:
  virtual ~UdpSockets() = default;
  [[nodiscard]] virtual std::unique_ptr<UdpSocket> NewUdpSocket() = 0;
};

}  // namespace quillorbit::platform
