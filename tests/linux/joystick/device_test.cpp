#include "platform/linux/joystick/device.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "linux/support.h"
#include "platform/linux/process/file_descriptor.h"
#include "platform/linux/process/lock_file.h"

namespace quillorbit::linux_tests {
namespace {

using linux_adapter::FileDescriptor;
using linux_adapter::LinuxDevice;
using platform::DeviceHandle;
using platform::INVALID_HANDLE_VALUE;

constexpr platform::Guid joystickClass = {
    0x781EF630, 0x72B2, 0x11D2, {0xB8, 0x52, 0x00, 0xC0, 0x4F, 0xAD, 0x51, 0x01}};

using Bytes = std::vector<std::uint8_t>;

bool Contains(const std::string& sText, const std::string& sPart) {
  return sText.find(sPart) != std::string::npos;
}

/// The driver's end of the socket.
class Driver {
 public:
  explicit Driver(const std::filesystem::path& path, int type = SOCK_SEQPACKET) {
    m_listener = FileDescriptor(socket(AF_UNIX, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    EXPECT_EQ(bind(m_listener.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    Listen();
  }
  void Listen() { EXPECT_EQ(listen(m_listener.Get(), 0), 0); }
  void Accept() {
    m_client = FileDescriptor(accept4(m_listener.Get(), nullptr, nullptr, SOCK_NONBLOCK));
    EXPECT_TRUE(m_client.IsOpen());
  }
  void RefuseFurther() { m_listener = {}; }
  void Die() {
    m_listener = {};
    m_client = {};
  }
  /// The next packet; empty also when there is none or the client has gone.
  Bytes Packet() {
    Bytes packet(100);
    const ssize_t n = recv(m_client.Get(), packet.data(), packet.size(), 0);
    packet.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
    return packet;
  }
  bool ClientHasGone() { return recv(m_client.Get(), nullptr, 0, 0) == 0; }

 private:
  FileDescriptor m_listener;
  FileDescriptor m_client;
};

class LinuxDeviceTest : public testing::Test {
 protected:
  bool IsPresent() {
    const DeviceHandle hSet = m_device->SetupDiGetClassDevsA(&joystickClass, nullptr, 0, 0x12);
    return hSet != INVALID_HANDLE_VALUE && m_device->SetupDiDestroyDeviceInfoList(hSet);
  }
  DeviceHandle Open() { return Open(*m_device); }
  static DeviceHandle Open(LinuxDevice& device) {
    return device.CreateFileA(R"(\\.\vJoyQuillorbit)", platform::GENERIC_READ, 0, nullptr,
                              platform::OPEN_EXISTING, 0, 0);
  }
  bool Send(DeviceHandle hDevice, const Bytes& input, std::uint32_t lCode = 100) {
    std::uint32_t lReturned = 99;
    const bool bSent = m_device->DeviceIoControl(hDevice, lCode, input.data(),
                                                 static_cast<std::uint32_t>(input.size()), nullptr,
                                                 0, &lReturned, nullptr);
    EXPECT_EQ(lReturned, 0u);
    return bSent;
  }
  /// What a failing attempt to open writes to standard error; empty when it does not fail.
  std::string Explanation() {
    LinuxDevice device(m_uinput);
    testing::internal::CaptureStderr();
    const DeviceHandle hDevice = Open(device);
    const std::string sText = testing::internal::GetCapturedStderr();
    return hDevice == INVALID_HANDLE_VALUE ? sText : "";
  }

  TemporaryRuntimeFolder m_runtime;
  std::filesystem::path m_socket = m_runtime / "vJoyQuillorbit";
  std::filesystem::path m_uinput = m_runtime / "uinput";  // missing unless a test makes one
  std::optional<LinuxDevice> m_device{m_uinput};
};

const Bytes report = {1, 0, 2, 0, 3, 0, 0xFF, 0xFF, 0x11, 0x22, 0x33, 0x80};

TEST_F(LinuxDeviceTest, HandsEachControlToTheUserDriverAsOnePacket) {
  Driver driver(m_socket);
  EXPECT_TRUE(IsPresent());
  const DeviceHandle hDevice = Open();
  ASSERT_NE(hDevice, INVALID_HANDLE_VALUE);
  ASSERT_NE(hDevice, 0u);
  driver.Accept();
  EXPECT_TRUE(Send(hDevice, report));
  EXPECT_TRUE(Send(hDevice, {}, 0x01020304));
  EXPECT_EQ(driver.Packet(),
            (Bytes{100, 0, 0, 0, 1, 0, 2, 0, 3, 0, 0xFF, 0xFF, 0x11, 0x22, 0x33, 0x80}));
  EXPECT_EQ(driver.Packet(), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(driver.Packet(), Bytes());
  EXPECT_FALSE(driver.ClientHasGone());
  EXPECT_TRUE(m_device->CloseHandle(hDevice));
  EXPECT_TRUE(driver.ClientHasGone());
}

TEST_F(LinuxDeviceTest, KnowsItsOwnHandlesPathAndClassOnly) {
  Driver driver(m_socket);
  const DeviceHandle hSet = m_device->SetupDiGetClassDevsA(&joystickClass, nullptr, 0, 0x12);
  const DeviceHandle hDevice = Open();
  EXPECT_FALSE(m_device->CloseHandle(hSet));
  EXPECT_FALSE(m_device->SetupDiDestroyDeviceInfoList(hDevice));
  EXPECT_FALSE(Send(hSet, report));
  EXPECT_TRUE(m_device->SetupDiDestroyDeviceInfoList(hSet));
  EXPECT_TRUE(m_device->CloseHandle(hDevice));
  EXPECT_FALSE(m_device->CloseHandle(hDevice));
  EXPECT_FALSE(Send(hDevice, report));
  EXPECT_FALSE(m_device->CloseHandle(0));
  driver.Accept();
  const DeviceHandle hNext = Open();
  EXPECT_NE(hNext, hDevice);
  EXPECT_FALSE(Send(hDevice, report));
  EXPECT_FALSE(m_device->DeviceIoControl(hNext, 100, nullptr, 12, nullptr, 0, nullptr, nullptr));

  for (const char* sPath : {"", "vJoyQuillorbit", R"(\\.\vJoyQuillorbi)", R"(\\.\vJoyQuillorbit2)",
                            static_cast<const char*>(nullptr)})
    EXPECT_EQ(m_device->CreateFileA(sPath, 0, 0, nullptr, 3, 0, 0), INVALID_HANDLE_VALUE);
  platform::Guid otherClass = joystickClass;
  otherClass.Data4[7] ^= 1;
  EXPECT_EQ(m_device->SetupDiGetClassDevsA(&otherClass, nullptr, 0, 0x12), INVALID_HANDLE_VALUE);
  EXPECT_EQ(m_device->SetupDiGetClassDevsA(nullptr, nullptr, 0, 0x12), INVALID_HANDLE_VALUE);
}

TEST_F(LinuxDeviceTest, NeverWaitsForADriverThatHangsAndOutlivesIt) {
  Driver driver(m_socket);
  const DeviceHandle hDevice = Open();  // before the driver accepts
  ASSERT_NE(hDevice, INVALID_HANDLE_VALUE);
  driver.Accept();
  int nSent = 0;
  for (int i = 0; i < 10000; ++i) nSent += Send(hDevice, report) ? 1 : 0;
  EXPECT_GT(nSent, 0);
  EXPECT_LT(nSent, 10000);
  EXPECT_FALSE(Send(hDevice, report));
  for (int i = 0; i < nSent; ++i) EXPECT_EQ(driver.Packet().size(), 16u);
  EXPECT_TRUE(Send(hDevice, report));  // it has woken up
  driver.Die();
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(Send(hDevice, report));  // and no SIGPIPE ends this
}

TEST_F(LinuxDeviceTest, IsRefusedByADriverInUseOrGone) {
  Driver driver(m_socket);
  const DeviceHandle hDevice = Open();
  EXPECT_TRUE(Contains(Explanation(), "refuses"));  // the queue of those who wait is full
  driver.Accept();
  driver.RefuseFurther();
  EXPECT_TRUE(Contains(Explanation(), "refuses"));
  EXPECT_TRUE(Send(hDevice, report));
  driver.Die();
  EXPECT_TRUE(Contains(Explanation(), "refuses"));  // the socket's file is still there
  EXPECT_TRUE(IsPresent());
}

TEST_F(LinuxDeviceTest, SaysWhatStandsInTheDriversPlace) {
  EXPECT_TRUE(Contains(Explanation(), m_socket.string() + ": no driver is running"));
  {
    const Driver stream(m_socket, SOCK_STREAM);
    EXPECT_NE(Explanation(), "");
  }
  std::filesystem::remove(m_socket);
  WriteFile(m_socket, "");
  EXPECT_TRUE(Contains(Explanation(), "not a driver's socket"));
  std::filesystem::remove(m_socket);
  Driver elsewhere(m_runtime / "elsewhere");
  std::filesystem::create_symlink(m_runtime / "elsewhere", m_socket);
  EXPECT_TRUE(Contains(Explanation(), "not a driver's socket"));

  setenv("XDG_RUNTIME_DIR", (m_runtime / "missing").c_str(), 1);
  EXPECT_TRUE(Contains(Explanation(), "no driver is running"));
  const auto deep = m_runtime / std::string(100, 'x');
  std::filesystem::create_directory(deep);
  setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
  EXPECT_NE(Explanation(), "");
}

TEST_F(LinuxDeviceTest, TrustsNoDriverOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can play another user";
  Driver driver(m_socket);
  ASSERT_EQ(lchown(m_socket.c_str(), 65534, 65534), 0);
  EXPECT_FALSE(IsPresent());
  EXPECT_TRUE(Contains(Explanation(), "belongs to another user (uid 65534)"));
  ASSERT_EQ(lchown(m_socket.c_str(), 0, 0), 0);
  {
    const AsNobody nobody;
    driver.Listen();  // from now on the kernel reports the listener's user
  }
  EXPECT_TRUE(Contains(Explanation(), "runs as another user (uid 65534)"));
}

TEST_F(LinuxDeviceTest, ExplainsBothPlacesOnceWhenThereIsNothing) {
  testing::internal::CaptureStderr();
  EXPECT_FALSE(IsPresent());
  EXPECT_EQ(Open(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quillorbit: there is no joystick device to write to. It looked in two places:\n"
            "  - " +
                m_socket.string() +
                ": no driver is running; to use one, start quillorbit-driver\n"
                "  - " +
                m_uinput.string() +
                ": the kernel module uinput is not loaded; load it with: sudo modprobe uinput\n");
}

TEST_F(LinuxDeviceTest, ExplainsWhyUinputCannotBeUsed) {
  WriteFile(m_uinput, "");
  EXPECT_TRUE(IsPresent());                                   // the presence of the node is enough
  EXPECT_TRUE(Contains(Explanation(), "could not be made"));  // it is no device
  {
    const FileDescriptor lock = linux_adapter::TryLock(m_runtime / "vJoyQuillorbit.uinput.lock");
    EXPECT_TRUE(Contains(Explanation(), "another program of yours"));
  }
  EXPECT_FALSE(Contains(Explanation(), "another program of yours"));
}

}  // namespace
}  // namespace quillorbit::linux_tests
