#pragma once

#include <functional>
#include <memory>

struct xcb_connection_t;

namespace quillorbit::linux_adapter {

struct Disconnect {
  void operator()(xcb_connection_t* pConnection) const;
};
using DisplayConnection = std::unique_ptr<xcb_connection_t, Disconnect>;

/// A connection to the display of the environment, or null. Waits for its answer.
[[nodiscard]] DisplayConnection ConnectDisplay();

/// Without its X server the toolkit ends the process wherever it is, by exit() or abort(), while
/// threads of a driver are at work on what the exit handlers take away. From this call on, the
/// process ends with EndAtOnce(1) and a line on the standard error instead, and likewise after any
/// other message of the toolkit that is fatal. To be called once, on the thread of the toolkit and
/// before there is one.
void ForestallExitOfToolkit();

/// What has to be done at that end, for as long as this object lives; there is one.
class DisplayLoss {
 public:
  /// `closeDown` is called on the toolkit's thread, from inside any call of the toolkit: it must
  /// neither use the toolkit nor throw.
  explicit DisplayLoss(std::function<void()> closeDown);
  ~DisplayLoss();
  DisplayLoss(const DisplayLoss&) = delete;
  DisplayLoss& operator=(const DisplayLoss&) = delete;
};

}  // namespace quillorbit::linux_adapter
