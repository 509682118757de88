// quillorbit-driver and quillorbit-send, with a stand-in for the program at their other end.

#include <csignal>
#include <gmock/gmock.h>

#include <netinet/in.h>
#include <sys/socket.h>

#include "linux/support.h"
#include "platform/linux/joystick/user_driver_socket.h"

namespace quillorbit::tools {
namespace {

using linux_adapter::FileDescriptor;
using test::ChildProcess;
using test::Eventually;
using testing::HasSubstr;

const std::string sPacket("d\0\0\0\x01\0\xFE\xFF\x2C\x01\x4B\0\x05\0\0\x80", 16);

/// Connects to the driver as soon as it takes a program.
FileDescriptor Connected() {
  FileDescriptor driver;
  EXPECT_TRUE(Eventually([&] {
    try {
      driver = linux_adapter::ConnectToUserDriver();
    } catch (const std::runtime_error&) {
    }
    return driver.IsOpen();
  }));
  return driver;
}

bool Send(const FileDescriptor& driver, std::string_view sBytes) {
  return send(driver.Get(), sBytes.data(), sBytes.size(), MSG_NOSIGNAL) == ssize_t(sBytes.size());
}

struct Tools : testing::Test {
  Tools() {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    socklen_t nLength = sizeof address;
    auto* pAddress = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(m_port.Get(), pAddress, nLength), 0);
    EXPECT_EQ(getsockname(m_port.Get(), pAddress, &nLength), 0);
    m_sPort = std::to_string(ntohs(address.sin6_port));
  }
  ChildProcess Sender(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--port", m_sPort});
    return ChildProcess(m_folder, QUILLORBIT_SEND, arguments);
  }
  /// The next datagram; empty when none has come.
  std::string Receive() {
    std::string sDatagram(100, '\0');
    const ssize_t n = recv(m_port.Get(), sDatagram.data(), sDatagram.size(), MSG_DONTWAIT);
    return sDatagram.substr(0, n < 0 ? 0 : static_cast<std::size_t>(n));
  }
  /// Everything that is sent until the end.
  std::string ReceiveAll(ChildProcess sender) {
    EXPECT_EQ(sender.Wait(), 0) << sender.Errors();
    m_sErrors = sender.Errors();
    std::string sAll;
    for (std::string sNext; !(sNext = Receive()).empty();) sAll += sNext;
    return sAll;
  }

  linux_tests::TemporaryRuntimeFolder m_folder;
  std::string m_sRecord = m_folder / "record", m_sErrors, m_sPort;
  FileDescriptor m_port{socket(AF_INET6, SOCK_DGRAM, 0)};  // takes IPv4 too
};

TEST_F(Tools, DriverServesOneProgramAtATime) {
  const auto socket = m_folder / "vJoyQuillorbit";
  linux_tests::WriteFile(socket, "what a killed driver has left");
  ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {"--record", m_sRecord});
  for (const std::size_t nBytes : {12u, 24u}) {
    const FileDescriptor program = Connected();
    EXPECT_TRUE(Send(program, sPacket));
    EXPECT_TRUE(Eventually([&] { return test::ReadFile(m_sRecord).size() == nBytes; }));
    EXPECT_THROW((void)linux_adapter::ConnectToUserDriver(), std::runtime_error);
    ChildProcess second(m_folder, QUILLORBIT_DRIVER, {"--record", m_sRecord});
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_THAT(second.Errors(), HasSubstr("already running"));
    EXPECT_EQ(status(socket).permissions(), std::filesystem::perms(0600));
  }
  driver.Signal(SIGTERM);
  EXPECT_EQ(driver.Wait(), 0);
  EXPECT_THAT(driver.Errors(), HasSubstr("reports 2, rejected packets 0, clients 2\n"));
  EXPECT_FALSE(exists(socket));
}

TEST_F(Tools, DriverTakesReportsAndCountsEverythingElse) {
  ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {"--print", "--record", m_sRecord, "--once"});
  const std::string sOtherCode = "e" + sPacket.substr(1);
  const std::string sHighByte = sPacket.substr(0, 3) + "\1" + sPacket.substr(4);
  for (FileDescriptor program = Connected();
       const std::string& sEach : {std::string(), sPacket.substr(0, 15), sPacket + "M", sOtherCode,
                                   sHighByte, std::string(60000, 'd'), sPacket})
    EXPECT_TRUE(Send(program, sEach));
  EXPECT_EQ(driver.Wait(), 0);
  EXPECT_EQ(test::ReadFile(m_sRecord), sPacket.substr(4));
  EXPECT_EQ(driver.Output(), "X   1  Y  -2  Z 300  Zr  75  mask 80000005  buttons 1 3 32\n");
  EXPECT_THAT(driver.Errors(), HasSubstr("reports 1, rejected packets 6, clients 1"));
}

TEST_F(Tools, SenderKeepsTheRateWhetherOrNotAnybodyListens) {
  const std::string sSent = ReceiveAll(
      Sender({"--pattern=steady", "--rate", "100", "--seconds", "0.5", "--host", "::1"}));
  const std::size_t nSent = sSent.size() / 20;
  // A machine that stalls loses some of the 50; the tool says how many it sent.
  EXPECT_THAT(nSent, testing::AllOf(testing::Ge(25u), testing::Le(50u)));
  EXPECT_EQ(sSent.substr(0, 20), std::string("K\0\0\0K\0\0\0K\0\0\0K\0\0\0\0\0\0\0", 20));
  EXPECT_THAT(m_sErrors, HasSubstr("sent " + std::to_string(nSent) + " datagrams in 0."));

  m_port = {};
  EXPECT_EQ(ReceiveAll(Sender({"--count=5", "--rate=100"})), "");
  EXPECT_THAT(m_sErrors, HasSubstr("send errors 4 (Connection refused)"));
}

TEST_F(Tools, SenderPlaysWhatItRecordedInALoopOrOnce) {
  const std::string sSent = ReceiveAll(Sender({"--count", "3", "--record", m_sRecord}));
  EXPECT_EQ(sSent.size(), 60u);
  EXPECT_EQ(test::ReadFile(m_sRecord), sSent);
  EXPECT_EQ(ReceiveAll(Sender({"--file", m_sRecord, "--count=7"})),
            sSent + sSent + sSent.substr(0, 20));
  EXPECT_EQ(ReceiveAll(Sender({"--file", m_sRecord, "--pattern", "file", "--once"})), sSent);
}

TEST_F(Tools, MeasureCountsTheReportsOfItsDatagramsUntilASignal) {
  ChildProcess sender = Sender({"--measure", "--rate=100"});
  const FileDescriptor program = Connected();
  for (char nNumber = 0; nNumber < 10;) {
    std::string sDatagram;
    ASSERT_TRUE(Eventually([&] { return !(sDatagram = Receive()).empty(); }));
    nNumber = sDatagram[16];
    if (nNumber == 10) sender.Signal(SIGINT);
    if (nNumber == 3) continue;
    std::string sReport("d\0\0\0", 4);
    for (const std::size_t nAxis : {0u, 4u, 8u, 12u}) sReport += sDatagram.substr(nAxis, 2);
    EXPECT_TRUE(Send(program, sReport + sDatagram.substr(16)));
  }
  EXPECT_EQ(sender.Wait(), 0) << sender.Errors();
  EXPECT_THAT(sender.Output(), testing::StartsWith("sent 10, arrived 9, lost 1, out of order 0, "
                                                   "duplicated 0\nmicroseconds: min "));
}

TEST_F(Tools, SayWhatTheyDoNotUnderstandOrCannotDo) {
  const struct {
    const char* sProgram;
    std::vector<std::string> arguments;
    int nExitCode;
    std::string sMessage;
  } cases[] = {
      {QUILLORBIT_DRIVER, {"--nonsense"}, 2, "--nonsense: no such option"},
      {QUILLORBIT_SEND, {"--port", "0"}, 2, "--port: '0' is not a number from 1 to 65535"},
      {QUILLORBIT_SEND, {"--file=/dev/null"}, 1, "/dev/null: holds no datagram"},
      {QUILLORBIT_SEND, {"--file=/dev/zero"}, 1, "/dev/zero: is longer than 64 MiB"},
      {QUILLORBIT_SEND, {"--record", test::FullDisk()}, 1, "/dev/full: No space left on device"},
      {QUILLORBIT_SEND, {"--measure", "--wait=0.1"}, 1, "no program has opened the device"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.sMessage);
    ChildProcess tool(m_folder, each.sProgram, each.arguments);
    EXPECT_EQ(tool.Wait(), each.nExitCode);
    EXPECT_THAT(tool.Errors(), HasSubstr(": " + each.sMessage));
  }
}

}  // namespace
}  // namespace quillorbit::tools
