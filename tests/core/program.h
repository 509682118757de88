#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "app/frmMain.h"
#include "fakes/platform.h"

namespace quillorbit {

using Lines = std::vector<std::string>;

/// The whole program on the fake platform.
struct Program {
  fakes::FakePlatform platform;
  frmMain main{platform.services};

  /// Starts it and forgets the calls of the start.
  void Start() {
    main.Form_Load();
    platform.log.Take();
  }
  void Hide() {
    platform.Window().Hide();
    platform.log.Take();
  }
  Lines Take() { return platform.log.Take(); }
};

/// The write of one report, as it crosses the seam.
inline std::string Report(const std::string& sBytes) {
  return "DeviceIoControl 42, 100, " + sBytes + ", 0, 0, 1, 0";
}

}  // namespace quillorbit
