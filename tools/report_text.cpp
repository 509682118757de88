#include "tools/report_text.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>
#include <utility>

namespace quillorbit::tools {
namespace {

constexpr std::size_t nBarCells = 7;

auto NamedAxes(const JoystickReport& report) {
  return std::array{std::pair{"X", report.x}, std::pair{"Y", report.y}, std::pair{"Z", report.z},
                    std::pair{"Zr", report.zr}};
}

std::string PressedButtons(std::int32_t mask) {
  if (mask == 0) return " none";
  std::string sButtons;
  for (int nBit = 0; nBit < 32; ++nBit)
    if ((static_cast<std::uint32_t>(mask) >> nBit & 1U) != 0)
      sButtons += ' ' + std::to_string(nBit + 1);
  return sButtons;
}

/// "---#---" for the centre of 0..150.
std::string Bar(int nValue) {
  std::string sBar(nBarCells, '-');
  const auto nCell = static_cast<std::size_t>(std::clamp(nValue, 0, 150)) * nBarCells / 151;
  sBar[nCell] = '#';
  return sBar;
}

}  // namespace

std::string PrintedLine(const JoystickReport& report) {
  std::ostringstream line;
  for (const auto& [sAxis, nValue] : NamedAxes(report))
    line << sAxis << ' ' << std::setw(3) << nValue << "  ";
  line << "mask " << std::hex << std::setw(8) << std::setfill('0')
       << static_cast<std::uint32_t>(report.b) << "  buttons" << PressedButtons(report.b) << '\n';
  return line.str();
}

std::string LiveLine(const JoystickReport& report, std::size_t nColumns) {
  std::ostringstream line;
  for (const auto& [sAxis, nValue] : NamedAxes(report))
    line << sAxis << ' ' << std::setw(3) << nValue << ' ' << Bar(nValue) << "  ";
  line << "buttons" << PressedButtons(report.b);
  return line.str().substr(0, nColumns);
}

}  // namespace quillorbit::tools
