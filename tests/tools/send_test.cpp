#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <netdb.h>

#include "support/child_process.h"
#include "udp_receiver.h"

namespace quillorbit::tools {
namespace {

using Arguments = std::vector<std::string>;

class QuillorbitSend : public testing::Test {
 protected:
  /// Runs it to its end, and answers what came out of the port, datagram by datagram.
  std::vector<std::string> RunAndReceive(Arguments arguments, const UdpReceiver& receiver) {
    arguments.insert(arguments.end(), {"--port", receiver.Port()});
    test::ChildProcess send(m_folder, QUILLORBIT_SEND, arguments);
    std::vector<std::string> datagrams;
    while (send.IsRunning())
      if (auto datagram = receiver.Receive(10)) datagrams.push_back(*datagram);
    while (auto datagram = receiver.Receive(0)) datagrams.push_back(*datagram);
    EXPECT_EQ(send.Wait(), 0) << send.Errors();
    m_sErrors = send.Errors();
    return datagrams;
  }

  [[nodiscard]] std::string NewFile(const std::string& sName, const std::string& sContent) const {
    std::ofstream(m_folder / sName, std::ios::binary) << sContent;
    return m_folder / sName;
  }

  test::TemporaryFolder m_folder;
  std::string m_sErrors;
};

std::string Joined(const std::vector<std::string>& datagrams) {
  std::string sAll;
  for (const std::string& sDatagram : datagrams) sAll += sDatagram;
  return sAll;
}

TEST_F(QuillorbitSend, SendsTheLevelStateAtTheRate) {
  const UdpReceiver receiver;
  const auto begin = std::chrono::steady_clock::now();
  const auto datagrams =
      RunAndReceive({"--pattern=steady", "--rate", "100", "--seconds", "0.5"}, receiver);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
  // A machine that stalls loses some of the 50; the tool says how many it sent.
  EXPECT_LE(datagrams.size(), 50U);
  EXPECT_GE(datagrams.size(), 25U);
  const std::string sLevel("K\0\0\0K\0\0\0K\0\0\0K\0\0\0\0\0\0\0", 20);
  for (const std::string& sDatagram : datagrams) EXPECT_EQ(sDatagram, sLevel);
  EXPECT_NE(m_sErrors.find("sent " + std::to_string(datagrams.size()) + " datagrams in 0."),
            std::string::npos)
      << m_sErrors;
  EXPECT_NE(m_sErrors.find("send errors 0\n"), std::string::npos) << m_sErrors;
}

TEST_F(QuillorbitSend, PlaysAFileInALoopOrOnce) {
  const std::string sContent =
      "abcdefghijklmnopqrst" + std::string(20, '\xFF') + "ABCDEFGHIJKLMNOPQRST";
  const std::string sFile = NewFile("motion", sContent);
  const UdpReceiver receiver;
  EXPECT_EQ(Joined(RunAndReceive({"--file", sFile, "--rate=1000", "--count=7"}, receiver)),
            sContent + sContent + sContent.substr(0, 20));
  EXPECT_EQ(Joined(RunAndReceive({"--file", sFile, "--pattern", "file", "--once"}, receiver)),
            sContent);
}

TEST_F(QuillorbitSend, RecordsWhatItSendsForALaterPlayback) {
  const std::string sRecord = m_folder / "record";
  const UdpReceiver receiver;
  const std::string sSent = Joined(RunAndReceive(
      {"--pattern", "demo", "--rate", "500", "--count", "100", "--record", sRecord}, receiver));
  EXPECT_EQ(sSent.size(), 2000U);
  EXPECT_EQ(test::ReadFile(sRecord), sSent);
  EXPECT_EQ(Joined(RunAndReceive({"--file", sRecord, "--once", "--rate", "2000"}, receiver)),
            sSent);
}

TEST_F(QuillorbitSend, FindsHostsByNameAndIpv6Address) {
  const UdpReceiver ipv6(true);
  EXPECT_EQ(RunAndReceive({"--host", "::1", "--count", "1"}, ipv6).size(), 1U);
  addrinfo* pFound = nullptr;
  if (getaddrinfo("localhost", nullptr, nullptr, &pFound) != 0)
    GTEST_SKIP() << "this machine does not know the name localhost";
  freeaddrinfo(pFound);
  const UdpReceiver ipv4;
  EXPECT_EQ(RunAndReceive({"--host", "localhost", "--count", "1"}, ipv4).size(), 1U);
}

TEST_F(QuillorbitSend, GoesOnWhileNobodyListensAndEndsAtASignal) {
  std::string sPort;
  {
    const UdpReceiver closed;
    sPort = closed.Port();
  }
  test::ChildProcess refused(m_folder, QUILLORBIT_SEND,
                             {"--port", sPort, "--count=5", "--rate=100"});
  EXPECT_EQ(refused.Wait(), 0);
  EXPECT_NE(refused.Errors().find("sent 5 datagrams"), std::string::npos) << refused.Errors();
  EXPECT_NE(refused.Errors().find("send errors 4 (Connection refused)"), std::string::npos);

  for (const int nSignal : {SIGINT, SIGTERM}) {
    const UdpReceiver receiver;
    test::ChildProcess send(m_folder, QUILLORBIT_SEND, {"--port", receiver.Port(), "--rate=1"});
    ASSERT_TRUE(receiver.Receive(20'000));
    send.Signal(nSignal);
    EXPECT_EQ(send.Wait(), 0);
    EXPECT_NE(send.Errors().find("sent 1 datagrams"), std::string::npos) << send.Errors();
  }
}

TEST_F(QuillorbitSend, RefusesWhatItDoesNotUnderstand) {
  const std::string sFile = NewFile("motion", "abcdefghijklmnopqrst");
  const struct {
    Arguments arguments;
    const char* sNamed;
  } cases[] = {
      {{"--port", "0"}, "--port: '0' is not a number from 1 to 65535"},
      {{"--port=65536"}, "--port: '65536'"},
      {{"--port", "5000x"}, "--port: '5000x'"},
      {{"--rate", "10001"}, "--rate: '10001' is not a number from 1 to 10000"},
      {{"--rate", ""}, "--rate: ''"},
      {{"--rate", " 60"}, "--rate: ' 60'"},
      {{"--count", "-1"}, "--count: '-1'"},
      {{"--count", "99999999999999999999"}, "--count: '99999999999999999999'"},
      {{"--seconds", "nan"}, "--seconds: 'nan'"},
      {{"--seconds", "1e3"}, "--seconds: '1e3' is not a number from 0.001 to 86400"},
      {{"--measure", "--wait", "0"}, "--wait: '0'"},
      {{"--pattern", "spiral"}, "--pattern: 'spiral'"},
      {{"--pattern", "file"}, "--pattern file"},
      {{"--pattern", "sweep", "--file", sFile}, "--pattern sweep"},
      {{"--once"}, "--once"},
      {{"--csv"}, "--csv"},
      {{"--wait", "5"}, "--wait"},
      {{"--measure", "--record", "-"}, "--record"},
      {{"--speed", "9"}, "--speed"},
      {{"--host"}, "--host"},
      {{"--count=1", "127.0.0.1"}, "127.0.0.1"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.sNamed);
    test::ChildProcess send(m_folder, QUILLORBIT_SEND, each.arguments);
    EXPECT_EQ(send.Wait(), 2);
    EXPECT_EQ(send.Errors().find("quillorbit-send: " + std::string(each.sNamed)), 0U)
        << send.Errors();
    EXPECT_NE(send.Errors().find("Try 'quillorbit-send --help'."), std::string::npos);
  }
}

TEST_F(QuillorbitSend, SaysWhyItCannotRun) {
  const std::string sFolder = m_folder.Path();
  const UdpReceiver receiver;
  const struct {
    Arguments arguments;
    std::string sMessage;
  } cases[] = {
      {{"--file", NewFile("empty", "")}, sFolder + "/empty: holds no datagram"},
      {{"--file", NewFile("half", std::string(30, 'x'))}, "not a multiple of 20"},
      {{"--file", sFolder + "/missing"}, sFolder + "/missing: No such file or directory"},
      {{"--file", sFolder}, sFolder + ": Is a directory"},
      {{"--host", "no host"}, "no host: "},
      {{"--count=1", "--record", sFolder}, sFolder + ": Is a directory"},
      {{"--port", receiver.Port(), "--record", test::FullDisk()},
       "/dev/full: No space left on device"},
      {{"--measure", "--wait=0.1"}, "no program has opened the device"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.sMessage);
    test::ChildProcess send(m_folder, QUILLORBIT_SEND, each.arguments);
    EXPECT_EQ(send.Wait(), 1);
    EXPECT_NE(send.Errors().find(each.sMessage), std::string::npos) << send.Errors();
    EXPECT_EQ(send.Output(), "");
  }
}

}  // namespace
}  // namespace quillorbit::tools
