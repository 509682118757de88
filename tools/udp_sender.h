#pragma once

#include <cstdint>
#include <string>

#include "intake/MotionData.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::tools {

/// Sends motion datagrams to one host and port.
class UdpSender {
 public:
  /// Throws when the host has no address or none can be sent to.
  UdpSender(const std::string& sHost, int nPort);

  /// A failure is counted and otherwise ignored; false when the datagram was not sent.
  bool Send(const MotionData& motion);

  [[nodiscard]] std::int64_t Sent() const { return m_nSent; }
  [[nodiscard]] std::int64_t Errors() const { return m_nErrors; }
  /// The errno of the newest failure, or 0.
  [[nodiscard]] int LastError() const { return m_nLastError; }

 private:
  linux_adapter::FileDescriptor m_socket;
  std::int64_t m_nSent = 0;
  std::int64_t m_nErrors = 0;
  int m_nLastError = 0;
};

}  // namespace quillorbit::tools
