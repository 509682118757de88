#pragma once

#include <string>
#include <vector>

#include <QString>

namespace quillorbit::bench {

/// A build of the program; the suffix tells its rows from those of this build.
struct Build {
  QString sProgram;
  std::string sSuffix;
};
using Builds = std::vector<Build>;  ///< this one first

// The sections of the table. Each prints itself.

/// The datagram handler on the fake platform: time and heap allocations for one datagram.
void Handler();
/// From sending to the report at the user-space driver, beside a bare loop, with and without the
/// picture; and what the picture costs.
void View(const Builds& builds);
/// From sending to the report while a user keeps the program's window busy.
void Busy(const Builds& builds);
/// Start to the window on the screen, and memory, beside an empty program of the same toolkit.
void Window();
/// Wake-ups and processor time of the hidden program, beside an empty one and a bare loop.
void Idle();

}  // namespace quillorbit::bench
