// The yardstick for the program's latency: the least that a program can do between a datagram and
// its report. It binds the UDP port that it is given, opens the user-space driver and passes on
// each datagram at once, in one thread on epoll, until the driver leaves or it is ended.

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "base/Bytes.h"
#include "intake/MotionData.h"
#include "joystick/JoystickReport.h"
#include "platform/linux/process/runtime_folder.h"

namespace {

using namespace quillorbit;

int Checked(int result, const char* sWhat) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), sWhat);
  return result;
}

std::uint16_t PortOf(std::string_view sText) {
  std::uint16_t nPort = 0;
  const auto [stop, error] = std::from_chars(sText.begin(), sText.end(), nPort);
  if (error != std::errc{} || stop != sText.end() || nPort == 0)
    throw std::runtime_error("usage: bench_bare_loop PORT");
  return nPort;
}

int OpenDriver() {
  const std::string sPath = linux_adapter::RuntimeFolder() / linux_adapter::sDeviceName;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (sPath.size() >= sizeof address.sun_path) throw std::runtime_error(sPath + ": too long");
  std::memcpy(address.sun_path, sPath.data(), sPath.size());
  const int driver = Checked(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0), "socket");
  Checked(connect(driver, reinterpret_cast<const sockaddr*>(&address), sizeof address), "driver");
  return driver;
}

int BindUdp(std::uint16_t nPort) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(nPort);
  const int udp = Checked(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket");
  Checked(bind(udp, reinterpret_cast<const sockaddr*>(&address), sizeof address), "port");
  return udp;
}

/// Passes on everything that is pending.
void PassOn(int udp, int driver) {
  std::array<std::byte, MotionData::nBytes + 1> datagram;
  for (ssize_t n; (n = recv(udp, datagram.data(), datagram.size(), 0)) >= 0;) {
    if (n != MotionData::nBytes) continue;
    const auto motion = MotionData::FromBytes(std::span(datagram).first<MotionData::nBytes>());
    const auto report =
        JoystickReport{
            .x = static_cast<std::int16_t>(motion.x),
            .y = static_cast<std::int16_t>(motion.y),
            .z = static_cast<std::int16_t>(motion.z),
            .zr = static_cast<std::int16_t>(motion.zr),
            .b = motion.b,
        }
            .ToBytes();
    std::array<std::byte, sizeof lReportControlCode + JoystickReport::nBytes> packet;
    StoreLittleEndian(std::span<std::byte>(packet), lReportControlCode);
    std::memcpy(packet.data() + sizeof lReportControlCode, report.data(), report.size());
    send(driver, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  }
}

void Run(std::uint16_t nPort) {
  const int driver = OpenDriver();
  const int udp = BindUdp(nPort);
  const int poll = Checked(epoll_create1(EPOLL_CLOEXEC), "epoll");
  epoll_event event{.events = EPOLLIN, .data = {.fd = udp}};
  Checked(epoll_ctl(poll, EPOLL_CTL_ADD, udp, &event), "epoll");
  event = {.events = EPOLLRDHUP, .data = {.fd = driver}};
  Checked(epoll_ctl(poll, EPOLL_CTL_ADD, driver, &event), "epoll");
  while (true) {
    if (epoll_wait(poll, &event, 1, -1) < 1) continue;
    if (event.data.fd == driver) return;
    PassOn(udp, driver);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(PortOf(argc == 2 ? argv[1] : ""));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "bench_bare_loop: " << error.what() << '\n';
    return 1;
  }
}
