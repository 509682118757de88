#include <array>
#include <map>
#include <stdexcept>

#include <QStringList>

#include "measure.h"
#include "sections.h"

namespace quillorbit::bench {
namespace {

constexpr std::array rates = {200, 600, 1000};
constexpr int nSeconds = 4;

/// What a user does with the window: commands of xdotool. The places are those of the title, of its
/// button that closes, of the port box and of the slider at its right end, in the size as designed.
struct Activity {
  const char* sName;
  const char* sBegin;
  const char* sOn;  ///< then again and again, each step followed by a pause; may be empty
};
constexpr std::array activities = {
    Activity{"window alone", "", ""},
    Activity{"menu open", "mousemove --window %1 417 427 click 3", ""},
    Activity{"message box open", "mousemove --window %1 792 -11 click 1", ""},
    Activity{"window dragged", "mousemove --window %1 300 -11 mousedown 1 mousemove_relative 50 50",
             "mousemove_relative 20 20|mousemove_relative -- -20 -20"},
    Activity{"window resized", "", "windowsize %1 830 480|windowsize %1 860 510"},
    Activity{"slider dragged",
             "mousemove --window %1 741 427 mousedown 1 mousemove_relative -- -60 0",
             "mousemove_relative -- -30 0|mousemove_relative 30 0"},
};

/// Does it until it is destroyed.
class User {
 public:
  User(const Activity& activity, const Subject& subject)
      : m_activity(activity), m_subject(subject), m_before(subject.State()) {
    constexpr int nMostSteps = static_cast<int>(rates.size()) * (nSeconds + 6) * 1000 / 16;
    QStringList commands = QString(activity.sBegin).split(' ', Qt::SkipEmptyParts);
    const QStringList steps = QString(activity.sOn).split('|', Qt::SkipEmptyParts);
    for (int i = 0; i < nMostSteps && !steps.isEmpty(); ++i)
      commands += steps[i % steps.size()].split(' ') + QStringList{"sleep", "0.016"};
    if (commands.isEmpty()) return;
    m_hand.start("xdotool", subject.WithWindow(commands));
    m_hand.waitForStarted();
  }
  User(const User&) = delete;
  User& operator=(const User&) = delete;
  ~User() {
    m_hand.kill();
    m_hand.waitForFinished();
    QProcess::execute("xdotool", {"mouseup", "1", "mousemove", "5", "5"});
  }

  /// Throws when the window does not show that it is being done.
  void Check() {
    const bool bSomething = m_activity.sBegin[0] != '\0' || m_activity.sOn[0] != '\0';
    const bool bGoesOn = !m_hand.waitForFinished(0) && m_hand.state() == QProcess::Running;
    if ((m_subject.State() != m_before) != bSomething || bGoesOn != (m_activity.sOn[0] != '\0'))
      throw std::runtime_error(std::string(m_activity.sName) + ": it is not so");
  }

 private:
  const Activity& m_activity;
  const Subject& m_subject;
  QByteArray m_before;
  QProcess m_hand;
};

}  // namespace

void Busy(const Builds& builds) {
  PrintHead("The same while the user interface is busy, 3D view with texts, " +
            std::to_string(nSeconds) + " s each");
  const auto name = [](const std::string& sName, int nRate) {
    return sName + ", " + std::to_string(nRate) + "/s";
  };
  std::map<int, Latency> bare;
  Subject loop(Scene::BareLoop, builds[0].sProgram);
  for (const int nRate : rates) {
    bare[nRate] = loop.Measure(nRate, nSeconds).latency;
    Print(name("bare epoll loop", nRate), bare[nRate], bare[nRate]);
  }
  for (const Activity& activity : activities) {
    for (const Build& build : builds) {
      Subject subject(Scene::Overlay, build.sProgram);
      User user(activity, subject);
      for (const int nRate : rates) {
        const Latency latency = subject.Measure(nRate, nSeconds).latency;
        user.Check();
        Print(name(activity.sName + build.sSuffix, nRate), latency, bare[nRate]);
      }
      subject.End();
    }
  }
}

}  // namespace quillorbit::bench
