#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>

#include "app/frmMain.h"
#include "fakes/platform.h"
#include "joystick/JoystickReport.h"
#include "sections.h"

namespace {

std::size_t nAllocations = 0;

}  // namespace

void* operator new(std::size_t n) {
  ++nAllocations;
  if (void* p = std::malloc(n == 0 ? 1 : n)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace quillorbit::bench {
namespace {

constexpr int nDatagrams = 200'000;
constexpr int nRounds = 7;

struct Result {
  double dNanoseconds = 1e9;
  double dAllocations = 0;
};

Result Measure(const std::function<void(std::int32_t)>& handle) {
  handle(0);
  const std::size_t nBefore = nAllocations;
  const auto start = std::chrono::steady_clock::now();
  for (std::int32_t i = 0; i < nDatagrams; ++i) handle(i);
  const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
  return {time.count() / nDatagrams, static_cast<double>(nAllocations - nBefore) / nDatagrams};
}

/// What cannot be saved: a datagram's bytes into values, the values into a report's bytes.
std::uint32_t nSink = 0;
void DecodeAndEncode(std::int32_t i) {
  const auto bytes = MotionData{.x = i % 151, .y = 75, .z = 75, .zr = 75, .b = i}.ToBytes();
  const MotionData motion = MotionData::FromBytes(bytes);
  const auto report =
      JoystickReport{static_cast<std::int16_t>(motion.x), static_cast<std::int16_t>(motion.y),
                     static_cast<std::int16_t>(motion.z), static_cast<std::int16_t>(motion.zr),
                     motion.b}
          .ToBytes();
  for (const std::byte b : report) nSink += std::to_integer<std::uint32_t>(b);
}

void Print(const char* sName, const Result& result, const Result& yardstick) {
  std::printf("  %-38s %9.1f %9.1f %14.2f\n", sName, result.dNanoseconds,
              result.dNanoseconds / yardstick.dNanoseconds, result.dAllocations);
}

}  // namespace

void Handler() {
  fakes::FakePlatform platform;
  frmMain main(platform.services);
  main.Form_Load();
  platform.log.Mute(true);
  const auto arrive = [&](std::int32_t i) {
    platform.Arrive({.x = i % 151, .y = 75, .z = 75, .zr = 75, .b = i});
  };
  const auto fail = [&](std::int32_t i) {
    platform.Arrive({.x = 40000, .y = 75, .z = 75, .zr = 75, .b = i});
  };

  // The rounds take turns, so that a noisy moment of the machine meets all of them.
  Result bare, hidden, visible, failing;
  const auto keepBest = [](Result& best, const Result& result) {
    best.dNanoseconds = std::min(best.dNanoseconds, result.dNanoseconds);
    best.dAllocations = std::max(best.dAllocations, result.dAllocations);
  };
  for (int i = 0; i < nRounds; ++i) {
    keepBest(bare, Measure(DecodeAndEncode));
    platform.Window().bVisible = false;
    keepBest(hidden, Measure(arrive));
    keepBest(failing, Measure(fail));
    platform.Window().bVisible = true;
    keepBest(visible, Measure(arrive));
  }
  std::printf("The datagram handler on a platform that does nothing (best of %d rounds of %d)\n",
              nRounds, nDatagrams);
  std::printf("  %-38s %9s %9s %14s\n", "", "ns each", "ratio", "operator new");
  Print("decode and encode alone", bare, bare);
  Print("handler, window hidden", hidden, bare);
  Print("handler, text display visible", visible, bare);
  Print("handler, hidden, x beyond 16 bits", failing, bare);
  if (nSink == 0) std::printf("\n");
}

}  // namespace quillorbit::bench
