#include "platform/linux/joystick/device.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <optional>
#include <vector>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "linux/support.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_tests {
namespace {

using linux_adapter::FileDescriptor;
using platform::DeviceHandle;
using platform::INVALID_HANDLE_VALUE;
using testing::HasSubstr;

constexpr platform::Guid joystickClass = {
    0x781EF630, 0x72B2, 0x11D2, {0xB8, 0x52, 0x00, 0xC0, 0x4F, 0xAD, 0x51, 0x01}};

using Bytes = std::vector<std::uint8_t>;

/// A report that begins with this byte, and the packet that it becomes.
Bytes Report(std::uint8_t x) { return {x, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}; }
Bytes Packet(std::uint8_t x) { return {100, 0, 0, 0, x, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}; }

/// The driver's end of the socket.
struct Driver {
  explicit Driver(const std::filesystem::path& path)
      : m_listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0)) {
    std::filesystem::remove(path);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strcpy(address.sun_path, path.c_str());
    EXPECT_EQ(bind(m_listener.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    Listen();
  }
  void Listen() { EXPECT_EQ(listen(m_listener.Get(), 0), 0); }
  bool Accept() {
    if (!m_client.IsOpen())
      m_client = FileDescriptor(accept4(m_listener.Get(), nullptr, nullptr, SOCK_NONBLOCK));
    return m_client.IsOpen();
  }
  /// The next packet; none when there is none, an empty one when the program has gone.
  std::optional<Bytes> Next() {
    Bytes packet(100);
    const ssize_t n = recv(m_client.Get(), packet.data(), packet.size(), 0);
    if (n < 0) return std::nullopt;
    packet.resize(static_cast<std::size_t>(n));
    return packet;
  }

  FileDescriptor m_listener, m_client;
};

DeviceHandle OpenPath(linux_adapter::LinuxDevice& device, const char* sPath) {
  return device.CreateFileA(sPath, 0, 0, nullptr, platform::OPEN_EXISTING, 0, 0);
}

struct LinuxDeviceTest : testing::Test {
  DeviceHandle Find() { return m_device.SetupDiGetClassDevsA(&joystickClass, nullptr, 0, 0x12); }
  DeviceHandle Open() { return OpenPath(m_device, R"(\\.\vJoyQuillorbit)"); }
  bool Send(DeviceHandle hDevice, const Bytes& input, std::uint32_t lCode = 100) {
    return m_device.DeviceIoControl(hDevice, lCode, input.data(),
                                    static_cast<std::uint32_t>(input.size()), nullptr, 0, nullptr,
                                    nullptr);
  }
  /// What an attempt to open that fails writes to the standard error.
  std::string Explanation() {
    linux_adapter::LinuxDevice device(m_uinput);
    testing::internal::CaptureStderr();
    EXPECT_EQ(OpenPath(device, R"(\\.\vJoyQuillorbit)"), INVALID_HANDLE_VALUE);
    return testing::internal::GetCapturedStderr();
  }

  TemporaryRuntimeFolder m_runtime;
  std::filesystem::path m_socket = m_runtime / "vJoyQuillorbit";
  std::filesystem::path m_uinput = m_runtime / "uinput";  // missing unless a test makes one
  linux_adapter::LinuxDevice m_device{m_uinput};
};

TEST_F(LinuxDeviceTest, SendsEachControlAsOnePacketAndKnowsItsHandles) {
  Driver driver(m_socket);
  const DeviceHandle hSet = Find();
  const DeviceHandle hDevice = Open();
  ASSERT_NE(hDevice, INVALID_HANDLE_VALUE);
  ASSERT_TRUE(driver.Accept());
  EXPECT_TRUE(Send(hDevice, Report(1)));
  EXPECT_TRUE(Send(hDevice, {}, 0x01020304));
  EXPECT_FALSE(Send(hSet, Report(2)));
  EXPECT_TRUE(m_device.SetupDiDestroyDeviceInfoList(hSet));
  EXPECT_EQ(driver.Next(), Packet(1));
  EXPECT_EQ(driver.Next(), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(driver.Next(), std::nullopt);
  EXPECT_TRUE(m_device.CloseHandle(hDevice));
  EXPECT_EQ(driver.Next(), Bytes());
  EXPECT_FALSE(m_device.CloseHandle(hDevice));
}

TEST_F(LinuxDeviceTest, LeavesADriverThatPausesWithTheNewestReport) {
  Driver driver(m_socket);
  const DeviceHandle hDevice = Open();
  ASSERT_TRUE(driver.Accept());
  const auto fill = [&] {
    int nSent = 0;
    while (nSent < 10'000 && Send(hDevice, Report(1))) ++nSent;
    return nSent;
  };
  const auto takeQueue = [&](int nSent) {
    while (nSent-- > 0) ASSERT_EQ(driver.Next(), Packet(1));
  };
  int nSent = fill();
  EXPECT_FALSE(Send(hDevice, Report(2)));
  EXPECT_FALSE(Send(hDevice, Report(3)));
  Settle();
  takeQueue(nSent);
  EXPECT_FALSE(Send(hDevice, {}, 7));  // there is room, but a report comes first
  Settle();
  EXPECT_EQ(driver.Next(), Packet(3));

  nSent = fill();
  EXPECT_FALSE(Send(hDevice, Report(4)));
  takeQueue(nSent);
  EXPECT_TRUE(Send(hDevice, Report(5)));  // in the place of 4
  Settle();
  EXPECT_EQ(driver.Next(), Packet(5));
  EXPECT_EQ(driver.Next(), std::nullopt);

  nSent = fill();
  EXPECT_FALSE(Send(hDevice, Report(6)));
  EXPECT_TRUE(m_device.CloseHandle(hDevice));
  takeQueue(nSent);
  EXPECT_EQ(driver.Next(), Packet(6));
  EXPECT_EQ(driver.Next(), Bytes());
}

TEST_F(LinuxDeviceTest, FindsADriverThatComesBack) {
  testing::internal::CaptureStderr();
  std::optional<Driver> driver(m_socket);
  const DeviceHandle hDevice = Open();
  ASSERT_TRUE(driver->Accept());
  driver.reset();
  EXPECT_FALSE(Send(hDevice, Report(3)));
  Settle();
  EXPECT_FALSE(Send(hDevice, Report(4)));
  driver.emplace(m_socket);
  ASSERT_TRUE(WaitUntil([&] { return driver->Accept(); }));
  Settle();
  EXPECT_EQ(driver->Next(), Packet(4));
  EXPECT_TRUE(Send(hDevice, Report(5)));
  EXPECT_EQ(driver->Next(), Packet(5));
  EXPECT_EQ(std::ranges::count(testing::internal::GetCapturedStderr(), '\n'), 1);  // said once
}

TEST_F(LinuxDeviceTest, TrustsNoDriverOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can play another user";
  Driver driver(m_socket);
  ASSERT_EQ(lchown(m_socket.c_str(), 65534, 65534), 0);
  EXPECT_EQ(Find(), INVALID_HANDLE_VALUE);
  EXPECT_THAT(Explanation(), HasSubstr("belongs to another user (uid 65534)"));
  ASSERT_EQ(lchown(m_socket.c_str(), 0, 0), 0);
  ASSERT_EQ(seteuid(65534), 0);
  driver.Listen();  // from now on the kernel reports the listener's user
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_THAT(Explanation(), HasSubstr("runs as another user (uid 65534)"));
}

TEST_F(LinuxDeviceTest, ExplainsWhyThereIsNoJoystick) {
  EXPECT_EQ(Find(), INVALID_HANDLE_VALUE);
  EXPECT_THAT(Explanation(), HasSubstr("sudo modprobe uinput\n"));
  WriteFile(m_socket, "");
  EXPECT_THAT(Explanation(), HasSubstr("not a driver's socket"));
  WriteFile(m_uinput, "");
  EXPECT_NE(Find(), INVALID_HANDLE_VALUE);  // the presence of the node is enough
  EXPECT_THAT(Explanation(), HasSubstr("could not be made"));
}

}  // namespace
}  // namespace quillorbit::linux_tests
