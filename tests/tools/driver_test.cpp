#include <csignal>
#include <gtest/gtest.h>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "driver_client.h"
#include "support/child_process.h"

namespace quillorbit::tools {
namespace {

using Arguments = std::vector<std::string>;

constexpr JoystickReport someReport{.x = 1, .y = -2, .z = 300, .zr = 75, .b = -2147483643};

class QuillorbitDriver : public testing::Test {
 protected:
  [[nodiscard]] bool SocketExists() const {
    return std::filesystem::is_socket(m_folder / "vJoyQuillorbit");
  }

  /// Ends the driver as its user would, and answers its parting line.
  [[nodiscard]] static std::string Stop(test::ChildProcess& driver, int nSignal = SIGTERM) {
    driver.Signal(nSignal);
    EXPECT_EQ(driver.Wait(), 0);
    return driver.Errors().substr(driver.Errors().find('\n') + 1);
  }

  test::TemporaryFolder m_folder;
};

TEST_F(QuillorbitDriver, ServesOneClientAtATimeAndRemovesItsSocket) {
  for (const int nSignal : {SIGTERM, SIGINT}) {
    test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {});
    {
      const DriverClient first = ConnectedClient(m_folder.Path());
      // The driver closes its ear when it takes the first; from then on a second is refused.
      ASSERT_TRUE(test::Eventually([&] { return DriverClient(m_folder.Path()).IsRefused(); }));
      for (int n = 0; n < 20; ++n) EXPECT_TRUE(DriverClient(m_folder.Path()).IsRefused());
      EXPECT_TRUE(first.Send(someReport));
      EXPECT_TRUE(SocketExists());
    }
    const DriverClient next = ConnectedClient(m_folder.Path());
    EXPECT_TRUE(next.Send(someReport));
    struct stat status {};
    ASSERT_EQ(stat((m_folder / "vJoyQuillorbit").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_NE(Stop(driver, nSignal).find("reports 2, rejected packets 0, clients 2\n"),
              std::string::npos);
    EXPECT_FALSE(SocketExists());
  }
}

TEST_F(QuillorbitDriver, ASecondRefusesToStartAndHarmsNothing) {
  test::ChildProcess first(m_folder, QUILLORBIT_DRIVER, {"--record", m_folder / "record"});
  const DriverClient client = ConnectedClient(m_folder.Path());
  EXPECT_TRUE(client.Send(someReport));
  ASSERT_TRUE(test::Eventually([&] { return test::ReadFile(m_folder / "record").size() == 12; }));

  test::ChildProcess second(m_folder, QUILLORBIT_DRIVER, {"--record", m_folder / "record"});
  EXPECT_EQ(second.Wait(), 1);
  EXPECT_NE(second.Errors().find("already running"), std::string::npos) << second.Errors();

  EXPECT_TRUE(client.Send(someReport));
  EXPECT_TRUE(test::Eventually([&] { return test::ReadFile(m_folder / "record").size() == 24; }));
  EXPECT_TRUE(SocketExists());
}

TEST_F(QuillorbitDriver, ReplacesTheSocketOfAKilledOne) {
  test::ChildProcess killed(m_folder, QUILLORBIT_DRIVER, {});
  ASSERT_TRUE(test::Eventually([&] { return SocketExists(); }));
  killed.Signal(SIGKILL);
  EXPECT_EQ(killed.Wait(), 128 + SIGKILL);
  ASSERT_TRUE(SocketExists());
  ASSERT_TRUE(DriverClient(m_folder.Path()).IsRefused());

  test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {"--once"});
  EXPECT_TRUE(ConnectedClient(m_folder.Path()).Send(someReport));
  EXPECT_EQ(driver.Wait(), 0);
  EXPECT_NE(driver.Errors().find("reports 1, rejected packets 0, clients 1"), std::string::npos);
  EXPECT_FALSE(SocketExists());
}

TEST_F(QuillorbitDriver, RecordsReportsAndCountsEverythingElse) {
  test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {"--record=-", "--once"});
  {
    const DriverClient client = ConnectedClient(m_folder.Path());
    const std::string sReport("d\0\0\0ABCDEFGHIJKL", 16);
    const std::string sOtherCode("e\0\0\0ABCDEFGHIJKL", 16);
    const std::string sHighByte("d\0\0\1ABCDEFGHIJKL", 16);
    for (const std::string& sPacket :
         {sReport, std::string(), sReport.substr(0, 15), sReport + "M", sReport.substr(0, 4),
          sOtherCode, sHighByte, std::string(60000, 'd'), std::string()})
      EXPECT_TRUE(client.Send(sPacket));
    EXPECT_TRUE(client.Send(someReport));
  }
  EXPECT_EQ(driver.Wait(), 0);
  // 1, -2, 300, 75, then bits 0, 2 and 31, each least significant byte first.
  EXPECT_EQ(driver.Output(),
            std::string("ABCDEFGHIJKL\x01\x00\xFE\xFF\x2C\x01\x4B\x00\x05\x00\x00\x80", 24));
  EXPECT_NE(driver.Errors().find("reports 2, rejected packets 8, clients 1"), std::string::npos)
      << driver.Errors();
}

TEST_F(QuillorbitDriver, PrintsEachReportAtOnce) {
  test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {"--print"});
  const DriverClient client = ConnectedClient(m_folder.Path());
  EXPECT_TRUE(client.Send(someReport));
  const std::string sLine = "X   1  Y  -2  Z 300  Zr  75  mask 80000005  buttons 1 3 32\n";
  EXPECT_TRUE(test::Eventually([&] { return driver.Output() == sLine; })) << driver.Output();
  EXPECT_TRUE(client.Send(JoystickReport{}));
  const std::string sNext = "X   0  Y   0  Z   0  Zr   0  mask 00000000  buttons none\n";
  EXPECT_TRUE(test::Eventually([&] { return driver.Output() == sLine + sNext; }))
      << driver.Output();
}

TEST_F(QuillorbitDriver, EndsWithAMessageWhenItsOutputFails) {
  int pipeEnds[2];
  ASSERT_EQ(pipe2(pipeEnds, O_CLOEXEC), 0);
  close(pipeEnds[0]);
  const linux_adapter::FileDescriptor pipeWithoutReader(pipeEnds[1]);
  const linux_adapter::FileDescriptor fullDisk(
      open(test::FullDisk().c_str(), O_WRONLY | O_CLOEXEC));
  const struct {
    Arguments arguments;
    int standardOutput;
    const char* sMessage;
  } cases[] = {
      {{"--print"}, pipeWithoutReader.Get(), "standard output: Broken pipe"},
      {{"--record", test::FullDisk()}, -1, "/dev/full: No space left on device"},
      {{"--record", "-"}, fullDisk.Get(), "standard output: No space left on device"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.sMessage);
    test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, each.arguments, each.standardOutput);
    EXPECT_TRUE(ConnectedClient(m_folder.Path()).Send(someReport));
    EXPECT_EQ(driver.Wait(), 1);
    EXPECT_NE(driver.Errors().find(each.sMessage), std::string::npos) << driver.Errors();
    EXPECT_FALSE(SocketExists());
  }
}

TEST_F(QuillorbitDriver, StopsThoughNobodyReadsItsOutput) {
  int pipeEnds[2];
  ASSERT_EQ(pipe2(pipeEnds, O_CLOEXEC), 0);
  const linux_adapter::FileDescriptor reader(pipeEnds[0]);
  const linux_adapter::FileDescriptor writer(pipeEnds[1]);
  test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, {"--print"}, writer.Get());
  const DriverClient client = ConnectedClient(m_folder.Path());
  pollfd room{.fd = writer.Get(), .events = POLLOUT, .revents = 0};
  while (poll(&room, 1, 0) == 1) client.Send(someReport);
  EXPECT_NE(Stop(driver).find("rejected packets 0, clients 1"), std::string::npos);
}

TEST_F(QuillorbitDriver, RefusesWhatItDoesNotUnderstand) {
  const struct {
    Arguments arguments;
    const char* sNamed;
  } cases[] = {
      {{"--nonsense"}, "--nonsense"}, {{"-x"}, "-x"},
      {{"--record"}, "--record"},     {{"--once=3"}, "--once=3"},
      {{"operand"}, "operand"},       {{"--print", "--record", "-"}, "--record"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.sNamed);
    test::ChildProcess driver(m_folder, QUILLORBIT_DRIVER, each.arguments);
    EXPECT_EQ(driver.Wait(), 2);
    EXPECT_EQ(driver.Errors().find("quillorbit-driver: " + std::string(each.sNamed)), 0U);
    EXPECT_NE(driver.Errors().find("Try 'quillorbit-driver --help'."), std::string::npos);
  }
  test::ChildProcess help(m_folder, QUILLORBIT_DRIVER, {"--help"});
  EXPECT_EQ(help.Wait(), 0);
  EXPECT_EQ(help.Output().find("Usage: quillorbit-driver"), 0U);
}

}  // namespace
}  // namespace quillorbit::tools
