#include "tools/patterns.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillorbit::tools {
namespace {

constexpr MotionData centred{lAxisCentre, lAxisCentre, lAxisCentre, lAxisCentre, 0};

/// How far a cycle has run, 0 to 1.
double Phase(double dSeconds, double dPeriod) {
  const double dCycles = dSeconds / dPeriod;
  return dCycles - std::floor(dCycles);
}

/// `dOffset` is -1 at one end and 1 at the other; a smaller radius than 75 stays off the ends.
std::int32_t Axis(double dOffset, double dRadius = 75) {
  return lAxisCentre + static_cast<std::int32_t>(std::lround(dRadius * dOffset));
}

double Sine(double dPhase) { return std::sin(2 * std::numbers::pi * dPhase); }
double Cosine(double dPhase) { return std::cos(2 * std::numbers::pi * dPhase); }

/// A triangle wave: 0, down to -1, up to 1, back to 0.
double DownUpAndBack(double dPhase) {
  if (dPhase < 0.25) return -4 * dPhase;
  if (dPhase < 0.75) return 4 * dPhase - 2;
  return 4 - 4 * dPhase;
}

std::int32_t WalkingButton(double dSeconds, double dButtonsPerSecond) {
  const double dButton = std::floor(32 * Phase(dSeconds, 32 / dButtonsPerSecond));
  return static_cast<std::int32_t>(1U << std::min(static_cast<unsigned>(dButton), 31U));
}

MotionData Sweep(double dSeconds) {
  constexpr double dPeriod = 4;
  constexpr std::array axes{&MotionData::x, &MotionData::y, &MotionData::z, &MotionData::zr};
  const double dAxis = std::floor(4 * Phase(dSeconds, 4 * dPeriod));
  MotionData motion = centred;
  motion.*axes[std::min<std::size_t>(static_cast<std::size_t>(dAxis), 3)] =
      Axis(DownUpAndBack(Phase(dSeconds, dPeriod)));
  return motion;
}

MotionData Circle(double dSeconds) {
  MotionData motion = centred;
  motion.x = Axis(Cosine(Phase(dSeconds, 4)));
  motion.y = Axis(Sine(Phase(dSeconds, 4)));
  return motion;
}

MotionData Buttons(double dSeconds) {
  MotionData motion = centred;
  motion.b = WalkingButton(dSeconds, 4);
  return motion;
}

MotionData Demo(double dSeconds) {
  return {
      .x = Axis(Cosine(Phase(dSeconds, 8)), 60),
      .y = Axis(Sine(Phase(dSeconds, 8)), 60),
      .z = Axis(Sine(Phase(dSeconds, 5)), 45),
      .zr = Axis(Sine(Phase(dSeconds, 7)), 60),
      .b = WalkingButton(dSeconds, 2),
  };
}

}  // namespace

std::optional<Pattern> PatternOfName(std::string_view sName) {
  const auto* found = std::ranges::find(namedPatterns, sName, &NamedPattern::sName);
  return found == namedPatterns.end() ? std::nullopt : std::optional(found->pattern);
}

MotionData MotionAt(Pattern pattern, double dSeconds) {
  switch (pattern) {
    case Pattern::steady:
      return centred;
    case Pattern::sweep:
      return Sweep(dSeconds);
    case Pattern::circle:
      return Circle(dSeconds);
    case Pattern::buttons:
      return Buttons(dSeconds);
    case Pattern::demo:
      return Demo(dSeconds);
  }
  return centred;
}

}  // namespace quillorbit::tools
