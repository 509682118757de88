#include "platform/presentation/newest_frame.h"

#include <array>
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
    device.Clear(0, nullptr, D3DCLEAR_TARGET, 0, 1, 0);
    device.SetVertexShader(nFrame);
    device.BeginScene();
    device.EndScene();
    device.Present(nullptr, nullptr, 0, nullptr);
  }
  static std::string Shader(int nFrame) { return "SetVertexShader " + std::to_string(nFrame); }
  static Lines Drawn(int nFrame) {
    return {"Clear 0, 0, 1, 0, 1, 0", Shader(nFrame), "BeginScene", "EndScene",
            "Present 0, 0, 0, 0"};
  }

  fakes::CallLog log, timerLog;
  std::shared_ptr<fakes::FakeDirect3DDevice> behind =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  bool bVisible = true;
  std::chrono::steady_clock::time_point now{1h};
  std::unique_ptr<fakes::FakeTimer> ownTimer =
      std::make_unique<fakes::FakeTimer>(timerLog, "timer", 0, false);
  fakes::FakeTimer& timer = *ownTimer;
  NewestFrameDevice device{
      behind, {[this] { return bVisible; }, [this] { return now; }, std::move(ownTimer)}};
};

/// Every call that a frame may be made of.
void DrawEverything(IDirect3DDevice8& device) {
  const std::array<float, 6> vertices = {1, 2, 3, 4, 5, 6};
  device.SetRenderState(D3DRS_LIGHTING, 1);
  device.SetTextureStageState(0, D3DTSS_MAGFILTER, D3DTEXF_LINEAR);
  device.SetTransform(D3DTS_VIEW, {{{{1, 2}, {3}}}});
  device.Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF102030, 0.5F, 7);
  device.BeginScene();
  D3DLIGHT8 light{};
  light.Direction.x = 2;
  device.SetLight(1, light);
  device.LightEnable(1, true);
  device.LightEnable(2, false);
  device.SetMaterial({{1, 2, 3, 4}, {}, {}, {}, 5});
  device.SetTexture(0, std::make_shared<fakes::FakeTexture>("picture", 1, 1, 1));
  device.SetVertexShader(D3DFVF_XYZ);
  device.SetStreamSource(0, std::make_shared<fakes::FakeVertexBuffer>(12), 12);
  device.SetIndices(std::make_shared<fakes::FakeIndexBuffer>(12), 0);
  device.DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 1, 2, 3, 4);
  device.DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 0, vertices.data(), 8);
  device.DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, vertices.data(), 8);
  device.EndScene();
  device.Present(nullptr, nullptr, 0, nullptr);
}

TEST_F(NewestFrameTest, FrameReachesTheDeviceCallByCallBeforePresentReturns) {
  fakes::CallLog directLog;
  fakes::FakeDirect3DDevice direct(directLog);
  DrawEverything(direct);
  DrawEverything(device);
  EXPECT_EQ(log.Calls(), directLog.Calls());
  EXPECT_EQ(behind->userVertices, direct.userVertices);
}

TEST_F(NewestFrameTest, SixtyUnevenFramesASecondAreEachShownAtOnce) {
  for (int i = 0; i < 600; ++i) {
    now = std::chrono::steady_clock::time_point(1h) + i * 16'667us + i * 7 % 8 * 1ms;
    Draw(static_cast<std::uint32_t>(i));
    ASSERT_EQ(log.Take(), Drawn(i));
  }
  EXPECT_FALSE(timer.bEnabled);
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
  EXPECT_GE(nShown, 60);
  EXPECT_LE(nShown, 64);
  ASSERT_TRUE(timer.bEnabled);
  timer.Elapse();
  EXPECT_EQ(log.Take(), Drawn(999));
  EXPECT_FALSE(timer.bEnabled);
}

TEST_F(NewestFrameTest, StatesOfADroppedFrameStaySetAndReadTheSame) {
  Draw(1);
  log.Take();
  device.SetRenderState(D3DRS_AMBIENT, 0x112233);
  device.SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE);
  Draw(2);  // kept; what was set before its Clear has gone on
  EXPECT_EQ(log.Take(), Lines({"SetRenderState 139, 1122867", "SetTextureStageState 0, 4, 4"}));
  device.SetRenderState(D3DRS_AMBIENT, 0x445566);
  EXPECT_EQ(device.GetRenderState(D3DRS_AMBIENT), 0x445566U);  // not there yet
  EXPECT_EQ(device.GetTextureStageState(0, D3DTSS_ALPHAOP), D3DTOP_MODULATE);
  Draw(3);  // takes its place
  EXPECT_EQ(log.Take(), Lines({Shader(2), "SetRenderState 139, 4478310"}));
  // A frame without a Clear goes on from the kept one, which is shown first.
  device.Present(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(log.Take(), Drawn(3));
}

TEST_F(NewestFrameTest, HiddenSurfaceKeepsTheNewestFrameUntilItIsShown) {
  bVisible = false;
  for (std::uint32_t i = 1; i <= 3; ++i, now += 1s) Draw(i);
  timer.bEnabled = true;
  timer.Elapse();
  EXPECT_EQ(log.Take(), Lines({Shader(1), Shader(2)}));
  bVisible = true;
  device.ShowKeptFrame();
  device.ShowKeptFrame();
  EXPECT_EQ(log.Take(), Drawn(3));  // once
}

TEST_F(NewestFrameTest, FailuresComeOutOfPresentOrAreDroppedWithTheirFrame) {
  log.FailAt(3);
  EXPECT_THROW(Draw(1), std::system_error);
  EXPECT_EQ(log.Take().size(), 3U);
  now += 1s;
  Draw(2);
  EXPECT_EQ(log.Take(), Drawn(2));
  Draw(3);
  log.FailAt(1);
  timer.Elapse();
  EXPECT_EQ(log.Take().size(), 1U);
  now += 1s;
  Draw(4);
  EXPECT_EQ(log.Take(), Drawn(4));
  const RECT part{0, 0, 1, 1};
  EXPECT_THROW(device.Clear(1, &part, D3DCLEAR_TARGET, 0, 1, 0), D3DError);
}

}  // namespace
}  // namespace quillorbit::presentation
