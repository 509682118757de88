// The road of a datagram through the whole program.

#include <cstdlib>
#include <limits>
#include <new>

#include "core/program.h"

namespace {

std::size_t nAllocations = 0;

}  // namespace

// Counts what the whole test program takes from the heap; new[] and the others call these two.
void* operator new(std::size_t nBytes) {
  ++nAllocations;
  if (void* const p = std::malloc(nBytes)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace quillorbit {
namespace {

constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
const Lines restart = {"timer0.Enabled 0", "timer0.Enabled 1"};

TEST(Receiver, EveryDatagramBecomesOneReport) {
  struct Case {
    const char* sSamples;
    MotionData motion;
    const char* sReport;  // nothing: there is none
  };
  const MotionData same{.x = 150, .y = -150, .z = 75, .zr = 149, .b = least + 1};
  // Of a filtered axis that does not fit 16 bits the last output is sent; another one loses the
  // report. A filter that cannot be tuned keeps its 0.
  const Case cases[] = {
      {"30", same, "4B 00 B5 FF 4B 00 95 00 01 00 00 80"},
      {"30", same, "70 00 90 FF 4B 00 95 00 01 00 00 80"},  // 112.5 to even
      {"30", {.x = 40000, .y = -32}, "70 00 B8 FF 00 00 00 00 00 00 00 00"},
      {"30", {.zr = 32768}, nullptr},
      // A wider format would give 2 for the first 15, a fused addition 27 for 134.
      {"6", {.x = 30, .y = 15}, "05 00 03 00 00 00 00 00 00 00 00 00"},
      {"6", {.x = 134, .y = 15}, "1A 00 05 00 00 00 00 00 00 00 00 00"},
      {"6", {-32768, 32767}, "C0 EA 59 15 00 00 00 00 00 00 00 00"},
      {"0", {150, -1, 32767, -32768, -1}, "96 00 FF FF FF 7F 00 80 FF FF FF FF"},
      {"0", {.y = -32769}, nullptr},
      {"-30", {100, 100, 1, 2, 3}, "00 00 00 00 01 00 02 00 03 00 00 00"}};
  std::map<std::string, Program> programs;
  for (const Case& c : cases) {
    Program& p = programs[c.sSamples];
    if (p.toolkit.pTray == nullptr) p.Start({{"samples", c.sSamples}});
    p.Hide();
    p.Arrive(c.motion);
    EXPECT_EQ(p.Take(), (c.sReport ? Lines{Report(c.sReport)} : Lines{}) + restart);
  }
}

TEST(Receiver, VisibleWindowShowsWhatCameUnlessTheReadFails) {
  Program p;
  p.Start();
  p.Arrive({.x = 150, .y = 100, .z = 10, .zr = -5, .b = 0x18001});
  EXPECT_EQ(p.Take(),
            Lines({Report("4B 00 32 00 0A 00 FB FF 01 80 01 00"), "lblFilter.Caption 30",
                   "lblPacket.Caption 1 (0/s)", "lblX.Caption 150 (75)", "lblY.Caption 100 (50)",
                   "lblZ.Caption 10", "lblZr.Caption -5", "lblButtons.Caption 98305"}) +
                Lamps(0x8001) + restart);
  p.Socket().bReadFails = true;
  p.Arrive({});
  EXPECT_EQ(p.Take(), Lines{});
}

TEST(Receiver, AnyFailingStepIsSkippedAloneAndSetsTheCountToZero) {
  Program p;
  p.Start();
  const auto arriveAfterLoss = [&](std::size_t nFailing) {
    p.tmrCheck().Elapse();
    p.Take();
    p.log.FailAt(nFailing);
    p.Arrive({.b = -1});
    return p.Take().size();
  };
  constexpr std::size_t nAll = 34;  // report, 7 readouts, 16 lamps, 5 for the icon, 3 texts, timer
  EXPECT_EQ(arriveAfterLoss(0), nAll);
  for (std::size_t k = 1; k <= nAll; ++k) {
    // A readout that fails ends the display's refresh, an icon the icon's step; every other step
    // stands for itself.
    const std::size_t nLost = k >= 2 && k <= 8 ? 8 - k : k >= 25 && k <= 29 ? 29 - k : 0;
    EXPECT_EQ(arriveAfterLoss(k), nAll - nLost) << "failing call " << k;
    p.Arrive({});
    EXPECT_EQ(p.Caption("lblPacket"), "1 (0/s)") << "failing call " << k;
    EXPECT_EQ(p.Take().size(), 26U) << "failing call " << k;  // the signal is back
  }
}

TEST(Receiver, TakesNothingFromTheHeap) {
  Program p;
  p.Start();
  for (const bool bVisible : {true, false}) {
    p.Window().bVisible = bVisible;
    p.Arrive({.b = 1});
    EXPECT_EQ(p.Take().size(), bVisible ? 26U : 3U);  // whereas now nothing is recorded
    p.log.Mute(true);
    const std::size_t nBefore = nAllocations;
    for (std::int32_t i = 0; i < 100; ++i)
      p.Arrive({.x = i, .y = -32768, .z = -32768, .zr = -32768, .b = least + i});
    EXPECT_EQ(nAllocations - nBefore, 0U) << "visible: " << bVisible;
    p.log.Mute(false);
  }
}

}  // namespace
}  // namespace quillorbit
