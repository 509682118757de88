#include "platform/presentation/drawing_thread.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace quillorbit::presentation {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr auto period = 16ms;  // of a display of 60 Hz
/// How much too early a frame may come and yet be drawn at once: a phone's 60 datagrams a second do
/// not arrive evenly. The next frame is due that much later.
constexpr auto tolerance = 8ms;

}  // namespace

DrawingThread::DrawingThread(std::shared_ptr<platform::IDirect3DDevice8> device)
    : m_target{std::move(device), {}} {}

void DrawingThread::Draw(Frame& frame, bool bSeen) {
  bool bWake = false;
  {
    const std::lock_guard lock(m_mutex);
    if (m_bEnded) return frame.Empty();
    frame.Replace(m_newest);
    std::swap(m_newest, frame);
    m_bSeen = bSeen;
    bWake = !std::exchange(m_bWanted, true);
  }
  if (bWake) m_wake.notify_one();
}

void DrawingThread::ShowAgain(bool bSeen) {
  {
    const std::lock_guard lock(m_mutex);
    m_bSeen = bSeen;
    m_bShowAgain = m_bWanted = true;
  }
  m_wake.notify_one();
}

void DrawingThread::End() {
  {
    const std::lock_guard lock(m_mutex);
    m_bEnded = true;
  }
  m_wake.notify_one();
}

void DrawingThread::Run(const std::function<void(bool)>& stepBack) {
  Frame frame;
  for (bool bShow = false; Wait(frame, bShow); frame.Empty()) {
    stepBack(true);
    Show(frame, bShow);
    stepBack(false);
  }
  m_shown.Empty();
  m_target = {};
}

/// Waits until there is something to do and the display can take a frame. Takes the newest, if it
/// would be seen; no frame, or an empty one, when none has come. False at the end.
bool DrawingThread::Wait(Frame& frame, bool& bShow) {
  std::unique_lock lock(m_mutex);
  m_wake.wait(lock, [this] { return m_bWanted || m_bEnded; });
  if (steady_clock::now() < m_due - tolerance)
    m_wake.wait_until(lock, m_due, [this] { return m_bEnded; });
  if (m_bEnded) return false;
  m_due = std::max(m_due, steady_clock::now()) + period;
  m_bWanted = false;
  bShow = m_bSeen && (m_bShowAgain || !m_newest.calls.empty());
  if (bShow) {
    std::swap(frame, m_newest);
    if (std::exchange(m_bShowAgain, false)) m_bSettled = false;  // its picture has to come again
  }
  return true;
}

void DrawingThread::Show(Frame& frame, bool bShow) {
  if (!Test() || !bShow) return;
  try {
    DrawAndPresent(frame);
  } catch (const std::exception&) {
    // There is no caller to report it to but the one who asks for the device's state.
    m_shown.Empty();
    static_cast<void>(Test());
  }
}

/// An empty frame stands for the one that was shown last.
void DrawingThread::DrawAndPresent(Frame& frame) {
  if (frame.calls.empty()) {
    if (!m_shown.calls.empty()) Present();
    return;
  }
  // The first of two equal frames may have begun with other states than it left.
  const bool bSame = frame == m_shown;
  if (bSame && m_bSettled) return;
  frame.Make(m_target);
  Present();
  m_bSettled = bSame;
  std::swap(m_shown, frame);
}

void DrawingThread::Present() { m_target.device->Present(nullptr, nullptr, 0, nullptr); }

bool DrawingThread::Test() {
  m_lCooperativeLevel = m_target.device->TestCooperativeLevel();
  return m_lCooperativeLevel == platform::D3D_OK;
}

DrawingThreads::DrawingThreads(Hooks hooks) : m_hooks(std::move(hooks)) {}

DrawingThreads::~DrawingThreads() {
  for (const Running& running : m_running) running.thread->End();
  const auto latest = steady_clock::now() + 500ms;
  const bool bAllEnded = std::ranges::all_of(m_running, [&](const Running& running) {
    return running.end.wait_until(latest) == std::future_status::ready;
  });
  if (!bAllEnded) m_hooks.giveUp();
}

void DrawingThreads::Start(std::shared_ptr<DrawingThread> thread) {
  std::erase_if(m_running, [](const Running& running) {
    return running.end.wait_for(0s) == std::future_status::ready;
  });
  auto end = std::async(std::launch::async, [hooks = m_hooks, thread] {
    hooks.begin();
    thread->Run(hooks.stepBack);
  });
  m_running.push_back({std::move(thread), std::move(end)});
}

}  // namespace quillorbit::presentation
