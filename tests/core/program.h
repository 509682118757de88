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

/// The icon of a resource on the main window and, unless the tray has it already, in the tray.
inline Lines IconCalls(const std::string& sName, int iHandle) {
  const auto load = [&](const char* sSize, const char* sKind, int iSizeHandle) {
    return Lines{
        "LoadImageA 4194304, " + sName + ", 1, " + sSize + ", 32768",
        std::string("SendMessageA 1001, 128, ") + sKind + ", " + std::to_string(iSizeHandle)};
  };
  Lines lines = load("32, 33", "1", iHandle + 32);
  const Lines small = load("16, 17", "0", iHandle + 16);
  lines.insert(lines.end(), small.begin(), small.end());
  lines.push_back("Shell_NotifyIconW 1, 936, 1002, 116, icon " + std::to_string(iHandle + 16));
  return lines;
}

/// The write of one report, as it crosses the seam.
inline std::string Report(const std::string& sBytes) {
  return "DeviceIoControl 42, 100, " + sBytes + ", 0, 0, 1, 0";
}

}  // namespace quillorbit
