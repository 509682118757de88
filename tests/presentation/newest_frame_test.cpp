#include "platform/presentation/newest_frame.h"

#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/direct3d8.h"
#include "fakes/timer.h"

namespace quillorbit::presentation {
namespace {

using namespace std::chrono_literals;
using namespace platform;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

struct NewestFrameTest : testing::Test {
  NewestFrameTest() {
    auto ownTimer = std::make_unique<fakes::FakeTimer>(timerLog, "timer", 0, false);
    timer = ownTimer.get();
    device = std::make_unique<NewestFrameDevice>(
        behind,
        FrameDisplay{[this] { return bVisible; }, [this] { return now; }, std::move(ownTimer)});
  }

  /// A frame that only its material tells from others.
  void Draw(float fRed) {
    device->Clear(0, nullptr, D3DCLEAR_TARGET, 0, 1, 0);
    device->BeginScene();
    D3DMATERIAL8 material{};
    material.Diffuse.r = fRed;
    device->SetMaterial(material);
    device->EndScene();
    device->Present(nullptr, nullptr, 0, nullptr);
  }
  static std::string Material(int nRed) {
    return "SetMaterial " + std::to_string(nRed) + " 0 0 0, 0 0 0 0, 0 0 0 0, 0 0 0 0, 0";
  }
  static Lines Drawn(int nRed) {
    return {"Clear 0, 0, 1, 0, 1, 0", "BeginScene", Material(nRed), "EndScene",
            "Present 0, 0, 0, 0"};
  }

  fakes::CallLog log, timerLog;
  std::shared_ptr<fakes::FakeDirect3DDevice> behind =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  bool bVisible = true;
  std::chrono::steady_clock::time_point now{1h};
  fakes::FakeTimer* timer = nullptr;
  std::unique_ptr<NewestFrameDevice> device;
};

/// Every call that a frame may be made of.
void DrawEverything(IDirect3DDevice8& device) {
  const std::array<float, 6> vertices = {1, 2, 3, 4, 5, 6};
  const auto texture = std::make_shared<fakes::FakeTexture>("picture", 1, 1, 1);
  device.SetRenderState(D3DRS_LIGHTING, 1);
  device.SetTextureStageState(0, D3DTSS_MAGFILTER, D3DTEXF_LINEAR);
  D3DMATRIX matrix{};
  matrix.m[3][1] = 5;
  device.SetTransform(D3DTS_VIEW, matrix);
  device.Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF102030, 0.5F, 7);
  device.BeginScene();
  D3DLIGHT8 light{};
  light.Type = D3DLIGHT_DIRECTIONAL;
  light.Direction.x = 2;
  device.SetLight(1, light);
  device.LightEnable(1, true);
  device.LightEnable(2, false);
  device.SetMaterial({{1, 2, 3, 4}, {}, {}, {}, 5});
  device.SetTexture(0, texture);
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
  DrawEverything(*device);
  EXPECT_EQ(log.Calls(), directLog.Calls());
  EXPECT_EQ(behind->userVertices, direct.userVertices);
  ASSERT_EQ(behind->userVertices.size(), 24U);
}

TEST_F(NewestFrameTest, SixtyUnevenFramesASecondAreEachShownAtOnce) {
  for (int i = 0; i < 600; ++i) {
    const auto unevenness = std::chrono::milliseconds((i * 7) % 8);
    now = std::chrono::steady_clock::time_point(1h) + i * 16'667us + unevenness;
    Draw(static_cast<float>(i));
    ASSERT_EQ(log.Take(), Drawn(i));
  }
  EXPECT_FALSE(timer->bEnabled);
}

TEST_F(NewestFrameTest, FasterFramesAreShownAtTheDisplaysRateAndTheNewestIsNeverLost) {
  int nShown = 0, nLast = -1;
  const auto count = [&] {
    for (const std::string& sCall : log.Take()) nShown += sCall == "Present 0, 0, 0, 0" ? 1 : 0;
  };
  auto timerDue = now;
  for (int i = 0; i < 1000; ++i, now += 1ms) {
    if (timer->bEnabled && now >= timerDue) timer->Elapse();
    const bool bWasEnabled = timer->bEnabled;
    Draw(static_cast<float>(i));
    if (timer->bEnabled && !bWasEnabled)
      timerDue = now + std::chrono::milliseconds(timer->iInterval);
    nLast = i;
    count();
  }
  EXPECT_GE(nShown, 60);
  EXPECT_LE(nShown, 64);
  ASSERT_TRUE(timer->bEnabled);
  EXPECT_LE(timer->iInterval, 16);
  timer->Elapse();
  EXPECT_EQ(log.Take(), Drawn(nLast));
  EXPECT_FALSE(timer->bEnabled);
}

TEST_F(NewestFrameTest, WhatADroppedFrameSetsStaysSet) {
  Draw(1);
  log.Take();
  device->SetRenderState(D3DRS_AMBIENT, 0x112233);
  EXPECT_EQ(device->GetRenderState(D3DRS_AMBIENT), 0x112233U);
  Draw(2);  // kept; what was set before its Clear has gone on
  EXPECT_THAT(log.Take(), ElementsAre("SetRenderState 139, 1122867"));
  Draw(3);  // takes its place
  EXPECT_THAT(log.Take(), ElementsAre(Material(2)));
  timer->Elapse();
  EXPECT_EQ(log.Take(), Drawn(3));

  // Whether a state is kept or has reached the device, it reads the same.
  EXPECT_EQ(device->GetRenderState(D3DRS_AMBIENT), 0x112233U);
  device->SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE);
  EXPECT_EQ(device->GetTextureStageState(0, D3DTSS_ALPHAOP), D3DTOP_MODULATE);
  EXPECT_EQ(device->GetTextureStageState(0, D3DTSS_COLOROP), D3DTOP_MODULATE);
}

TEST_F(NewestFrameTest, HiddenSurfaceKeepsTheNewestFrameUntilItIsShown) {
  bVisible = false;
  for (int i = 1; i <= 3; ++i, now += 1s) Draw(static_cast<float>(i));
  EXPECT_EQ(log.Take(), (Lines{Material(1), Material(2)}));
  device->ShowKeptFrame();
  EXPECT_THAT(log.Take(), IsEmpty());
  bVisible = true;
  device->ShowKeptFrame();
  EXPECT_EQ(log.Take(), Drawn(3));
  device->ShowKeptFrame();
  EXPECT_THAT(log.Take(), IsEmpty());

  // Hidden while a frame waits for the display
  now += 1s;
  Draw(4);
  EXPECT_EQ(log.Take(), Drawn(4));
  Draw(5);
  bVisible = false;
  timer->Elapse();
  EXPECT_THAT(log.Take(), IsEmpty());
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
  timer->Elapse();
  EXPECT_EQ(log.Take(), (Lines{"Clear 0, 0, 1, 0, 1, 0"}));
  now += 1s;
  Draw(4);
  EXPECT_EQ(log.Take(), Drawn(4));

  const RECT part{0, 0, 1, 1};
  EXPECT_THROW(device->Clear(1, &part, D3DCLEAR_TARGET, 0, 1, 0), D3DError);
}

TEST_F(NewestFrameTest, FramesGivenUpInTheMiddleLeaveOnlyTheirStates) {
  for (int i = 0; i < 3; ++i) {
    device->Clear(0, nullptr, D3DCLEAR_TARGET, 0, 1, 0);
    device->BeginScene();
    device->SetVertexShader(static_cast<std::uint32_t>(i));
    device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 3, 0, 1);
  }
  EXPECT_EQ(log.Take(), (Lines{"SetVertexShader 0", "SetVertexShader 1"}));
  Draw(7);
  Lines expected = Drawn(7);
  expected.insert(expected.begin(), "SetVertexShader 2");
  EXPECT_EQ(log.Take(), expected);
}

TEST_F(NewestFrameTest, FrameThatGoesOnFromTheLastShowsThatFirst) {
  Draw(1);
  Draw(2);  // kept
  log.Take();
  device->BeginScene();
  device->EndScene();
  device->Present(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(log.Take(), Drawn(2));
}

}  // namespace
}  // namespace quillorbit::presentation
