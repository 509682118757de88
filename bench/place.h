#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace quillorbit::bench {

/// A place of its own for the programs that are measured: a runtime folder with the driver's
/// socket, and a copy of the program beside a profile with a free port. The user's own profile and
/// joystick stay out of it.
class Place {
 public:
  enum class View { Text, Model, Overlay };

  /// With the model beside the program, its window shows the 3D view, for Overlay with texts on it.
  /// Both are copied from where the program stands.
  explicit Place(View eView, const QString& sProgram = Built("quillorbit"));

  [[nodiscard]] QString Program() const { return m_folder.filePath("quillorbit"); }
  [[nodiscard]] QString Profile() const { return m_folder.filePath("quillorbit.setup"); }
  [[nodiscard]] QString Socket() const { return m_folder.filePath("vJoyQuillorbit"); }
  [[nodiscard]] QString Port() const { return m_sPort; }
  /// A program of the build folder.
  [[nodiscard]] static QString Built(const QString& sName);
  /// Gives a process this place's runtime folder.
  void Prepare(QProcess& process) const;
  /// Starts the driver of this place and waits for its socket.
  void StartDriver(QProcess& driver) const;

 private:
  QTemporaryDir m_folder;
  QString m_sPort;
};

/// What a process with all its threads has used of the processor so far.
[[nodiscard]] double CpuMilliseconds(qint64 nProcess);

/// Ends a process in order, and throws std::runtime_error when it does not end so.
void End(QProcess& process);

}  // namespace quillorbit::bench
