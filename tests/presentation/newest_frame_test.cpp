#include "platform/presentation/newest_frame.h"

#include <gtest/gtest.h>

#include "fakes/direct3d8.h"
#include "fakes/timer.h"

namespace quillorbit::presentation {
namespace {

using namespace std::chrono_literals;
using namespace platform;
using Lines = std::vector<std::string>;

struct NewestFrameTest : testing::Test {
  /// A frame that only its vertex shader tells from others.
  void Draw(std::uint32_t nFrame) {
    device.Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF, 1, 7);
    device.SetVertexShader(nFrame);
    device.BeginScene();
    device.EndScene();
    device.Present(nullptr, nullptr, 0, nullptr);
  }
  static Lines Drawn(int nFrame) {
    return {"Clear 0, 0, 1, 255, 1, 7", "SetVertexShader " + std::to_string(nFrame), "BeginScene",
            "EndScene", "Present 0, 0, 0, 0"};
  }

  fakes::CallLog log, timerLog;
  fakes::Ref<fakes::FakeDirect3DDevice> behind = std::make_shared<fakes::FakeDirect3DDevice>(log);
  bool bVisible = true;
  std::chrono::steady_clock::time_point now{1h};
  std::unique_ptr<fakes::FakeTimer> ownTimer =
      std::make_unique<fakes::FakeTimer>(timerLog, "timer", 0, false);
  fakes::FakeTimer& timer = *ownTimer;
  NewestFrameDevice device{
      behind, {[this] { return bVisible; }, [this] { return now; }, std::move(ownTimer)}};
};

TEST_F(NewestFrameTest, SixtyUnevenFramesASecondAreEachShownAtOnce) {
  for (int i = 0; i < 600; ++i) {
    now = std::chrono::steady_clock::time_point(1h) + i * 16'667us + i * 7 % 8 * 1ms;
    Draw(static_cast<std::uint32_t>(i));
    ASSERT_EQ(log.Take(), Drawn(i));
  }
}

TEST_F(NewestFrameTest, FasterFramesAreShownAtTheDisplaysRateAndTheNewestIsNeverLost) {
  long nShown = 0;
  auto timerDue = now;
  for (std::uint32_t i = 0; i < 1000; ++i, now += 1ms) {
    if (timer.bEnabled && now >= timerDue) timer.Elapse();
    const bool bWasEnabled = timer.bEnabled;
    Draw(i);
    if (timer.bEnabled && !bWasEnabled) timerDue = now + timer.iInterval * 1ms;
    nShown += std::ranges::count(log.Take(), "Present 0, 0, 0, 0");
  }
  EXPECT_NEAR(static_cast<double>(nShown), 62, 2);
  timer.Elapse();
  EXPECT_EQ(log.Take(), Drawn(999));
}

TEST_F(NewestFrameTest, StatesOfADroppedFrameStaySetAndReadTheSame) {
  Draw(1);
  log.Take();
  device.SetRenderState(D3DRS_AMBIENT, 0x112233);
  Draw(2);  // kept; what was set before its Clear has gone on
  EXPECT_EQ(log.Take(), Lines{"SetRenderState 139, 1122867"});
  device.SetRenderState(D3DRS_AMBIENT, 0x445566);
  EXPECT_EQ(device.GetRenderState(D3DRS_AMBIENT), 0x445566U);  // not there yet
  Draw(3);                                                     // takes its place
  EXPECT_EQ(log.Take(), Lines({"SetVertexShader 2", "SetRenderState 139, 4478310"}));
  // A frame without a Clear goes on from the kept one, which is shown first.
  device.Present(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(log.Take(), Drawn(3));
}

TEST_F(NewestFrameTest, HiddenSurfaceKeepsTheNewestFrameUntilItIsShown) {
  bVisible = false;
  for (std::uint32_t i = 1; i <= 3; ++i, now += 1s) Draw(i);
  device.ShowKeptFrame();  // not while it is hidden
  EXPECT_EQ(log.Take(), Lines({"SetVertexShader 1", "SetVertexShader 2"}));
  bVisible = true;
  device.ShowKeptFrame();
  EXPECT_EQ(log.Take(), Drawn(3));
}

TEST_F(NewestFrameTest, FailureComesOutOfPresentAndIsDroppedWithItsFrame) {
  log.FailAt(3);
  EXPECT_THROW(Draw(1), std::system_error);
  EXPECT_EQ(log.Take().size(), 3U);
  now += 1s;
  Draw(2);
  EXPECT_EQ(log.Take(), Drawn(2));
}

}  // namespace
}  // namespace quillorbit::presentation
