#include <csignal>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "driver_client.h"
#include "intake/MotionData.h"
#include "support/child_process.h"
#include "udp_receiver.h"

namespace quillorbit::tools {
namespace {

JoystickReport ReportOf(const std::string& sDatagram) {
  const auto bytes = std::as_bytes(std::span(sDatagram)).first<MotionData::nBytes>();
  const MotionData motion = MotionData::FromBytes(bytes);
  return {static_cast<std::int16_t>(motion.x), static_cast<std::int16_t>(motion.y),
          static_cast<std::int16_t>(motion.z), static_cast<std::int16_t>(motion.zr), motion.b};
}

/// Stands for the program; it ends when the driver does.
class Forwarder {
 public:
  Forwarder(const test::TemporaryFolder& folder, const UdpReceiver& receiver, bool bUnreliable)
      : m_thread([this, &folder, &receiver, bUnreliable](const std::stop_token& stop) {
          const DriverClient driver = ConnectedClient(folder.Path());
          driver.Send(JoystickReport{75, 75, 75, 75, 0});  // no answer to any datagram
          while (!stop.stop_requested())
            if (const auto datagram = receiver.Receive(20))
              Forward(driver, ReportOf(*datagram), bUnreliable);
        }) {}

 private:
  /// Unreliably: every tenth is lost, 3 and 4 change places, 7 comes twice, and so do reports that
  /// nobody has asked for.
  void Forward(const DriverClient& driver, const JoystickReport& report, bool bUnreliable) {
    if (bUnreliable && report.b != 0 && report.b % 10 == 0) return;
    if (bUnreliable && report.b == 3) {
      m_held = report;
      return;
    }
    driver.Send(report);
    if (report.b == 4 && m_held) driver.Send(*m_held);
    if (!bUnreliable || report.b != 7) return;
    driver.Send(report);
    driver.Send(JoystickReport{75, 75, 75, 75, 0});
  }

  std::optional<JoystickReport> m_held;
  std::jthread m_thread;
};

class Measure : public testing::Test {
 protected:
  test::TemporaryFolder m_folder;
  UdpReceiver m_receiver;
};

TEST_F(Measure, CountsWhatIsLostReorderedAndDuplicated) {
  test::ChildProcess send(m_folder, QUILLORBIT_SEND,
                          {"--measure", "--port", m_receiver.Port(), "--count=100", "--rate=500"});
  const Forwarder forwarder(m_folder, m_receiver, true);
  EXPECT_EQ(send.Wait(), 0) << send.Errors();
  EXPECT_EQ(send.Output().find("sent 100, arrived 90, lost 10, out of order 1, duplicated 1\n"
                               "microseconds: min "),
            0U)
      << send.Output();
}

TEST_F(Measure, PrintsOneLineForScripts) {
  test::ChildProcess send(m_folder, QUILLORBIT_SEND,
                          {"--measure", "--csv", "--port", m_receiver.Port(), "--seconds=0.2"});
  const Forwarder forwarder(m_folder, m_receiver, false);
  EXPECT_EQ(send.Wait(), 0) << send.Errors();
  std::vector<double> fields;
  std::istringstream line(send.Output());
  for (std::string sField; std::getline(line, sField, ',');) fields.push_back(std::stod(sField));
  ASSERT_EQ(fields.size(), 9U) << send.Output();
  EXPECT_GT(fields[0], 0);
  EXPECT_EQ(fields[1], fields[0]);
  EXPECT_EQ(fields[2], 0);
  EXPECT_EQ(fields[3], 0);
  EXPECT_GT(fields[4], 0);
  for (std::size_t i = 5; i < 9; ++i) EXPECT_GE(fields[i], fields[i - 1]);
}

TEST_F(Measure, ASignalEndsTheSendingAndTheResultIsStillPrinted) {
  test::ChildProcess send(m_folder, QUILLORBIT_SEND,
                          {"--measure", "--port", m_receiver.Port(), "--rate=10"});
  {
    const DriverClient driver = ConnectedClient(m_folder.Path());
    // The first datagrams are probes; the signal comes when number 2 is on its way.
    for (std::int32_t nNumber = 0; nNumber < 2;) {
      const auto datagram = m_receiver.Receive(20'000);
      ASSERT_TRUE(datagram);
      nNumber = ReportOf(*datagram).b;
      if (nNumber == 2) send.Signal(SIGINT);
      driver.Send(ReportOf(*datagram));
    }
    EXPECT_EQ(send.Wait(), 0) << send.Errors();
  }
  EXPECT_EQ(send.Output().find("sent 2, arrived 2, lost 0,"), 0U) << send.Output();
}

TEST_F(Measure, SaysWhenTheProgramDoesNotAnswerOrLeaves) {
  {
    test::ChildProcess send(m_folder, QUILLORBIT_SEND,
                            {"--measure", "--port", m_receiver.Port(), "--wait=0.5"});
    const DriverClient silent = ConnectedClient(m_folder.Path());
    silent.Send(JoystickReport{75, 75, 75, 75, 0});
    EXPECT_EQ(send.Wait(), 1);
    EXPECT_NE(send.Errors().find("no report has come"), std::string::npos) << send.Errors();
  }
  test::ChildProcess send(m_folder, QUILLORBIT_SEND, {"--measure", "--port", m_receiver.Port()});
  EXPECT_TRUE(ConnectedClient(m_folder.Path()).IsConnected());  // and gone again
  EXPECT_EQ(send.Wait(), 1);
  EXPECT_NE(send.Errors().find("the program has closed the device"), std::string::npos);
}

}  // namespace
}  // namespace quillorbit::tools
