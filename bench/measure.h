#pragma once

#include <array>
#include <string>

#include <QProcess>
#include <QString>

#include "frame_counter.h"
#include "place.h"

namespace quillorbit::bench {

/// How a measured program stands on the screen.
enum class Scene { BareLoop, Hidden, View, Overlay };

/// From the sending of datagrams to their reports at the user-space driver.
struct Latency {
  static constexpr std::array sNames = {"median", "p90", "p99", "p99.9", "worst"};

  double dLost = 0, dOutOfOrder = 0;
  std::array<double, sNames.size()> microseconds{};
};

/// What was shown in a second meanwhile, and the milliseconds of processor time that it took.
struct Cost {
  double dFrames, dProgram, dServer;  ///< of the 3D view; of all its threads; of the X server
};

/// A program that is measured, in a place of its own.
class Subject {
 public:
  /// Starts the program, unless it is the bare loop.
  Subject(Scene eScene, const QString& sProgram);

  struct Result {
    Latency latency;
    Cost cost;
  };
  /// Sends datagrams, once the program has settled.
  [[nodiscard]] Result Measure(int nRate, int nSeconds);
  void End();

  /// What xdotool does with the program's window, which is its %1. There has to be a window
  /// manager.
  [[nodiscard]] QStringList WithWindow(const QStringList& commands) const;
  /// The program's windows with their places and sizes, and its profile.
  [[nodiscard]] QByteArray State() const;

 private:
  [[nodiscard]] QStringList Search(const QStringList& options) const;

  Place m_place;
  QProcess m_driver, m_program;
  FrameCounter m_frames;
  bool m_bBareLoop;
};

/// Runs xdotool and returns what it prints; throws std::runtime_error when it fails.
QByteArray Xdotool(const QStringList& arguments);

/// The head and the rows of a table: each time also as the ratio to the bare loop.
void PrintHead(const std::string& sTitle);
void Print(const std::string& sName, const Latency& latency, const Latency& bare);

}  // namespace quillorbit::bench
