#include "tools/udp_sender.h"

#include <array>
#include <cerrno>
#include <memory>
#include <stdexcept>

#include <netdb.h>
#include <sys/socket.h>

#include "tools/system_call.h"

namespace quillorbit::tools {
namespace {

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

Addresses Resolve(const std::string& sHost, int nPort) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(sHost.c_str(), std::to_string(nPort).c_str(), &hints, &found);
  if (error == EAI_SYSTEM) throw SystemError(sHost);
  if (error != 0) throw std::runtime_error(sHost + ": " + gai_strerror(error));
  return {found, &freeaddrinfo};
}

linux_adapter::FileDescriptor Connect(const addrinfo& address) {
  linux_adapter::FileDescriptor connected(socket(address.ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (connected.IsOpen() && connect(connected.Get(), address.ai_addr, address.ai_addrlen) != 0)
    return {};
  return connected;
}

}  // namespace

UdpSender::UdpSender(const std::string& sHost, int nPort) {
  const Addresses addresses = Resolve(sHost, nPort);
  // For a name with both kinds of address IPv4 is used, which works without IPv6 too.
  for (const bool bIpv4 : {true, false})
    for (const addrinfo* each = addresses.get(); each != nullptr && !m_socket.IsOpen();
         each = each->ai_next)
      if ((each->ai_family == AF_INET) == bIpv4) m_socket = Connect(*each);
  if (!m_socket.IsOpen()) throw SystemError(sHost);
}

bool UdpSender::Send(const MotionData& motion) {
  const auto bytes = motion.ToBytes();
  for (int nAttempt = 1; nAttempt <= 2; ++nAttempt) {
    if (send(m_socket.Get(), bytes.data(), bytes.size(), 0) >= 0) {
      ++m_nSent;
      return true;
    }
    ++m_nErrors;
    m_nLastError = errno;
    // This reports an earlier datagram that nobody received; the current one has not been tried.
    if (m_nLastError != ECONNREFUSED) return false;
  }
  return false;
}

}  // namespace quillorbit::tools
