#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <mutex>

#include "platform/presentation/frame.h"

namespace quillorbit::presentation {

/// Draws the frames of one device on a thread of its own, no more than about 60 a second, and each
/// time the newest. Between the two threads there is one frame: none waits behind it, and nobody
/// waits for the other.
class DrawingThread {
 public:
  explicit DrawingThread(std::shared_ptr<platform::IDirect3DDevice8> device);

  // For the thread that makes the frames. None of these waits for the device.

  /// Hands a frame over to be drawn, or to be kept while nobody would see it, in place of an
  /// earlier one that was not drawn yet. Gets an empty frame for it.
  void Draw(Frame& frame, bool bSeen);
  /// What was drawn last has to be shown again, because it can be seen again or in another size.
  void ShowAgain(bool bSeen);
  /// What the device's TestCooperativeLevel has answered last. It is asked before each frame, also
  /// before those that nobody sees, and after a failure.
  [[nodiscard]] std::int32_t CooperativeLevel() const { return m_lCooperativeLevel; }
  /// Whatever is being drawn is the last.
  void End();

  /// The thread: until End. The device is released on it. `stepBack` is called around the drawing.
  void Run(const std::function<void(bool)>& stepBack);

 private:
  [[nodiscard]] bool Wait(Frame& frame, bool& bShow);
  void Show(Frame& frame, bool bShow);
  void DrawAndPresent(Frame& frame);
  void Present();
  [[nodiscard]] bool Test();

  std::mutex m_mutex;
  std::condition_variable m_wake;
  Frame m_newest;          ///< handed over; empty when there is none
  bool m_bWanted = false;  ///< there is something to do since the last time
  bool m_bShowAgain = false;
  bool m_bSeen = false;
  bool m_bEnded = false;

  std::atomic<std::int32_t> m_lCooperativeLevel = platform::D3D_OK;

  // The thread's own
  Target m_target;
  Frame m_shown;            ///< the last that was drawn and shown; empty when that failed
  bool m_bSettled = false;  ///< drawn twice: a third time gives the same picture
  std::chrono::steady_clock::time_point m_due;  ///< when the display can show the next frame
};

/// Starts drawing threads, and ends them with the program.
class DrawingThreads {
 public:
  /// What a platform has for them.
  struct Hooks {
    std::function<void()> begin = [] {};  ///< called first on each thread
    /// Called on the thread with true before it draws: whatever else wants the processor goes
    /// before it. With false after that, for it holds a lock that others wait for next.
    std::function<void(bool)> stepBack = [](bool) {};
    /// Called when a thread does not end with the program, because its driver hangs. Has to end the
    /// process.
    std::function<void()> giveUp;
  };
  explicit DrawingThreads(Hooks hooks);
  /// Waits for the threads, but half a second at the most.
  ~DrawingThreads();
  DrawingThreads(const DrawingThreads&) = delete;
  DrawingThreads& operator=(const DrawingThreads&) = delete;

  /// Throws std::system_error when there can be no more threads.
  void Start(std::shared_ptr<DrawingThread> thread);

 private:
  struct Running {
    std::shared_ptr<DrawingThread> thread;
    std::future<void> end;
  };

  const Hooks m_hooks;
  std::list<Running> m_running;
};

}  // namespace quillorbit::presentation
