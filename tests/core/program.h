#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "app/frmMain.h"
#include "fakes/platform.h"

namespace quillorbit {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

/// The calls of a text, which "; " separates.
inline Lines Calls(const std::string& sText) {
  Lines lines;
  for (std::size_t i = 0, j = 0; j != std::string::npos; i = j + 2)
    lines.push_back(sText.substr(i, (j = sText.find("; ", i)) - i));
  return lines;
}

/// The whole program on the fake platform.
struct Program : fakes::FakePlatform {
  frmMain main{services};

  Program() { Take(); }
  /// Starts it with a profile of these elements, and returns the calls of the start.
  Lines Start(const std::vector<std::pair<std::string, std::string>>& profile = {}) {
    if (!profile.empty()) StoreProfile(profile);
    main.Form_Load();
    return Take();
  }
  void Hide() {
    Window().Hide();
    Take();
  }
  Lines Take() { return log.Take(); }
};

/// The write of one report, as it crosses the seam.
inline std::string Report(const std::string& sBytes) {
  return "DeviceIoControl 42, 100, " + sBytes + ", 0, 0, 1, 0";
}

/// The lamps for a button mask.
inline Lines Lamps(int lButtons) {
  Lines lines;
  for (int i = 0; i < 16; ++i)
    lines.push_back("lblButton" + std::to_string(i) + ".BackColor " +
                    (lButtons >> i & 1 ? "255" : "16777215"));
  return lines;
}

}  // namespace quillorbit
