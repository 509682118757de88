#include "driver_client.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

#include "support/child_process.h"

namespace quillorbit::tools {

DriverClient::DriverClient(const std::filesystem::path& folder)
    : m_socket(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string sPath = folder / "vJoyQuillorbit";
  std::memcpy(address.sun_path, sPath.data(), std::min(sPath.size(), sizeof address.sun_path - 1));
  if (connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    m_nError = errno;
}

bool DriverClient::Send(std::string_view sPacket) const {
  return send(m_socket.Get(), sPacket.data(), sPacket.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(sPacket.size());
}

bool DriverClient::Send(const JoystickReport& report) const {
  const auto bytes = report.ToBytes();
  std::string sPacket("d\0\0\0", 4);  // 100
  sPacket.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return Send(sPacket);
}

DriverClient ConnectedClient(const std::filesystem::path& folder) {
  DriverClient client(folder);
  EXPECT_TRUE(test::Eventually([&] {
    if (!client.IsConnected()) client = DriverClient(folder);
    return client.IsConnected();
  }));
  return client;
}

}  // namespace quillorbit::tools
