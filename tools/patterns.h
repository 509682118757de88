#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "intake/MotionData.h"

namespace quillorbit::tools {

/// What a stand-in for the phone sends. The axes run within 0..150 and never jump.
enum class Pattern {
  steady,   ///< every axis at its centre
  sweep,    ///< each axis in turn from the centre down to 0, up to 150 and back
  circle,   ///< X and Y on a circle that touches the ends
  buttons,  ///< one button after the other, all 32
  demo,     ///< a circle on X and Y, Z and Zr swaying, the buttons walking
};

struct NamedPattern {
  std::string_view sName;
  Pattern pattern;
};

inline constexpr std::array namedPatterns{
    NamedPattern{"steady", Pattern::steady}, NamedPattern{"sweep", Pattern::sweep},
    NamedPattern{"circle", Pattern::circle}, NamedPattern{"buttons", Pattern::buttons},
    NamedPattern{"demo", Pattern::demo},
};

[[nodiscard]] std::optional<Pattern> PatternOfName(std::string_view sName);

/// The pattern's state so many seconds after its beginning.
[[nodiscard]] MotionData MotionAt(Pattern pattern, double dSeconds);

}  // namespace quillorbit::tools
