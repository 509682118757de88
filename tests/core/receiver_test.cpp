#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <random>

#include "core/program.h"

namespace {

std::size_t nAllocations = 0;

void* Allocate(std::size_t nBytes) {
  ++nAllocations;
  if (void* p = std::malloc(nBytes == 0 ? 1 : nBytes)) return p;
  throw std::bad_alloc();
}

}  // namespace

// Counts what the whole test program takes from the heap.
void* operator new(std::size_t n) { return Allocate(n); }
void* operator new[](std::size_t n) { return Allocate(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace quillorbit {
namespace {

const Lines restart = {"timer0.Enabled = 0", "timer0.Enabled = 1"};

struct ReceiverTest : testing::Test {
  void StartWithSamples(const std::string& sSamples) {
    p.platform.StoreProfile({{"samples", sSamples}});
    p.Start();
    p.Hide();
  }
  /// What the program does for a datagram while its window is hidden.
  Lines Hidden(const std::string& sReportBytes) {
    return {Report(sReportBytes), restart[0], restart[1]};
  }
  Program p;
};

TEST_F(ReceiverTest, EveryDatagramBecomesAReport) {
  StartWithSamples("30");
  const MotionData motion{.x = 150, .y = -150, .z = 75, .zr = 149, .b = -2147483647};
  p.platform.Arrive(motion);
  EXPECT_EQ(p.Take(), Hidden("4B 00 B5 FF 4B 00 95 00 01 00 00 80"));
  p.platform.Arrive(motion);
  EXPECT_EQ(p.Take(), Hidden("70 00 90 FF 4B 00 95 00 01 00 00 80"));  // 112.5 to even
  p.platform.Arrive(motion);
  EXPECT_EQ(p.Take(), Hidden("83 00 7D FF 4B 00 95 00 01 00 00 80"));
}

TEST_F(ReceiverTest, SamplesZeroLeavesTheAxesAlone) {
  StartWithSamples("0");
  p.platform.Arrive({.x = 150, .y = -1, .z = 32767, .zr = -32768, .b = -1});
  EXPECT_EQ(p.Take(), Hidden("96 00 FF FF FF 7F 00 80 FF FF FF FF"));
}

TEST_F(ReceiverTest, WrongSizesAndFailedReadsDoNothingAtAll) {
  StartWithSamples("30");
  const std::vector<std::byte> bytes(65507);
  for (const std::size_t nSize : {0U, 1U, 19U, 21U, 65507U}) {
    p.platform.Socket().Arrive(std::span(bytes).first(nSize));
    EXPECT_EQ(p.Take(), Lines{}) << nSize;
  }
  p.platform.Socket().bReadFails = true;
  p.platform.Arrive({});
  EXPECT_EQ(p.Take(), Lines{});
  p.platform.Socket().bReadFails = false;
  p.platform.Window().Show();
  p.platform.Arrive({});
  EXPECT_EQ(p.platform.Caption("lblPacket"), "1 (0/s)");
}

TEST_F(ReceiverTest, AxisBeyond16BitsFailsItsOwnStep) {
  StartWithSamples("30");
  p.platform.Arrive({.x = 100, .y = 100});
  p.Take();
  p.platform.Arrive({.x = 40000, .y = 100});
  EXPECT_EQ(p.Take(), Hidden("32 00 4B 00 00 00 00 00 00 00 00 00"));  // X keeps its 50
  p.platform.Arrive({.x = 100, .y = 100, .zr = 32768});
  EXPECT_EQ(p.Take(), restart);  // no report

  Program raw;
  raw.platform.StoreProfile({{"samples", "0"}});
  raw.Start();
  raw.Hide();
  raw.platform.Arrive({.y = -32769});
  EXPECT_EQ(raw.Take(), restart);
}

TEST_F(ReceiverTest, FailuresSetTheCountBackToZero) {
  p.Start();
  const auto count = [&](const MotionData& motion) {
    p.platform.Arrive(motion);
    return p.platform.Caption("lblPacket");
  };
  EXPECT_EQ(count({}), "1 (0/s)");
  EXPECT_EQ(count({}), "2 (0/s)");
  EXPECT_EQ(count({.x = 40000}), "0 (0/s)");
  EXPECT_EQ(count({}), "1 (0/s)");
  EXPECT_EQ(count({.z = 40000}), "0 (0/s)");
  EXPECT_EQ(count({}), "1 (0/s)");
}

TEST_F(ReceiverTest, CountAtItsHighestStartsAgainAndTheDatagramCounts) {
  ReceiverState state;
  state.m_setup =
      std::make_unique<CSetup>(p.platform.process, p.platform.resources, p.platform.xml);
  state.m_gamepad = std::make_unique<CGamePad>(p.platform.device);
  state.m_filterX = std::make_unique<CFilter>();
  state.m_filterY = std::make_unique<CFilter>();
  state.m_packetCount = std::numeric_limits<std::int32_t>::max();
  Controls controls(p.platform.services);
  const std::unique_ptr<frmSysTray> noTray;
  AttitudeView view(p.platform.services, state, controls);
  ConnectionStatus status(p.platform.services, state, controls, view, noTray);
  Receiver receiver(state, controls, view, status);
  controls.sckUDP->DataArrival = [&] { receiver.sckUDP_DataArrival(); };
  p.Take();

  p.platform.Arrive({.z = 75});
  EXPECT_EQ(state.m_packetCount, 0);
  EXPECT_EQ(p.Take().at(0), Report("00 00 00 00 4B 00 00 00 00 00 00 00"));
  p.platform.Arrive({.z = 75});
  EXPECT_EQ(state.m_packetCount, 1);
}

TEST_F(ReceiverTest, UnusableFilterStillSendsTheOtherAxes) {
  StartWithSamples("-30");
  p.platform.Arrive({.x = 100, .y = 100, .z = 1, .zr = 2, .b = 3});
  EXPECT_EQ(p.Take(), Hidden("00 00 00 00 01 00 02 00 03 00 00 00"));
}

TEST_F(ReceiverTest, VisibleWindowShowsWhatCame) {
  p.Start();
  p.platform.Arrive({.x = 150, .y = 100, .z = 10, .zr = -5, .b = 0x18001});
  Lines expected = {Report("4B 00 32 00 0A 00 FB FF 01 80 01 00"),
                    "lblFilter.Caption = 30",
                    "lblPacket.Caption = 1 (0/s)",
                    "lblX.Caption = 150 (75)",
                    "lblY.Caption = 100 (50)",
                    "lblZ.Caption = 10",
                    "lblZr.Caption = -5",
                    "lblButtons.Caption = 98305"};
  for (int i = 0; i < 16; ++i)
    expected.push_back("lblButton" + std::to_string(i) +
                       ".BackColor = " + (i == 0 || i == 15 ? "255" : "16777215"));
  expected.insert(expected.end(), restart.begin(), restart.end());
  EXPECT_EQ(p.Take(), expected);

  p.platform.Arrive({.b = std::numeric_limits<std::int32_t>::min()});
  EXPECT_EQ(p.platform.Caption("lblButtons"), "-2147483648");
  for (int i = 0; i < 16; ++i)
    EXPECT_EQ(p.platform.Get<fakes::FakeLabel>("lblButton" + std::to_string(i)).backColor,
              0xFFFFFFU);
}

TEST_F(ReceiverTest, AnyFailingStepIsSkippedAlone) {
  p.Start();
  p.platform.Arrive({.b = -1});
  const Lines all = p.Take();
  ASSERT_EQ(all.size(), 26U);  // report, 7 readouts, 16 lamps, 2 for the watchdog
  for (std::size_t k = 1; k <= all.size(); ++k) {
    p.platform.log.FailAt(k);
    p.platform.Arrive({.b = -1});
    // A readout that fails ends the display's refresh; every other step stands for itself.
    const std::size_t nLost = k >= 2 && k <= 8 ? 8 - k : 0;
    EXPECT_EQ(p.Take().size(), all.size() - nLost) << "failing call " << k;
  }
}

TEST_F(ReceiverTest, RandomDatagramsByTheTenThousand) {
  StartWithSamples("30");
  std::mt19937 random(1);
  std::array<std::uint32_t, 6> words{};
  for (int i = 0; i < 10000; ++i) {
    for (auto& word : words) word = static_cast<std::uint32_t>(random());
    if (i % 2 == 0)
      for (auto& word : words) word %= 151;
    p.platform.Socket().Arrive(
        std::as_bytes(std::span(words)).first(i % 3 == 0 ? random() % 25 : 20));
  }
  p.Take();
  // Half of the way to 75 each time, until rounding stops it at 74 or 76.
  for (int i = 0; i < 20; ++i) p.platform.Arrive({.x = 75, .y = 75, .z = 75, .zr = 75});
  EXPECT_THAT(p.Take().at(19 * 3),
              testing::MatchesRegex("DeviceIoControl 42, 100, 4[ABC] 00 4[ABC] 00 4B 00 4B 00 "
                                    "00 00 00 00, 0, 0, 1, 0"));
}

TEST_F(ReceiverTest, DatagramTakesNothingFromTheHeap) {
  p.Start();
  p.platform.log.Mute(true);
  for (const bool bVisible : {true, false}) {
    p.platform.Window().bVisible = bVisible;
    const std::size_t nBefore = nAllocations;
    for (std::int32_t i = 0; i < 100; ++i)
      p.platform.Arrive({.x = i, .y = -32768, .z = -32768, .zr = -32768, .b = -i - 2147483000});
    EXPECT_EQ(nAllocations - nBefore, 0U) << "visible: " << bVisible;
  }
  EXPECT_EQ(p.platform.device.nReports, 200);
}

}  // namespace
}  // namespace quillorbit
