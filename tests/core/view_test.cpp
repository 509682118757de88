// The 3D view of the whole program.

#include <algorithm>

#include "core/program.h"

namespace quillorbit {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

// The matrices' numbers were worked out apart from the program, with 300 bits, and rounded to
// 32-bit floats.

// Lighting, depth buffering, ambient light, linear filters; matrices; font; model; lights.
const Lines setup = Calls(
    "NewDirectX8; Direct3DCreate; NewD3DX8; GetAdapterDisplayMode 0; "
    "CheckDeviceFormat 0, 1, 22, 2, 1, 80; "
    "CreateDevice 0, 1, 2001, 32, 0, 0, 22, 0, 0, 4, 0, 1, 0, 80, 0, 0, 0; "
    "SetRenderState 137, 1; SetRenderState 7, 1; SetRenderState 139, 2105376; "
    "SetTextureStageState 0, 16, 2; SetTextureStageState 0, 17, 2; "
    "SetTransform 256, 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1; "
    "SetTransform 2, -1 0 0 0 0 1 0 0 0 0 -1 0 -0 -0 90 1; "
    "SetTransform 3, 0x1.3504f2p+1 0 0 0 0 0x1.3504f2p+1 0 0 0 0 0x1.000d1cp+0 1 "
    "0 0 -0x1.99ae94p-4 0; "
    "NewStdFont; StdFont.Name Verdana; StdFont.Size 12; CreateFont device, 77; "
    "LoadMeshFromX C:\\Games\\testPlane.x, 544, device; "
    "CreateTextureFromFileEx device, C:\\Games\\front.png, 128, 128, 4294967295, 0, 0, 1, 3, 3, "
    "0; SetMaterial 1 1 1 1 1 1 1 1 0 0 0 0 0 0 0 0 0; "
    "SetLight 0, 3, 3 3 3 0 0 0 0 0 0 0 0 0 0 0 0 0 -1 -1 0 0 0 0 0 0 0; "
    "SetLight 1, 3, 3 3 3 0 0 0 0 0 0 0 0 0 0 0 0 0 1 1 0 0 0 0 0 0 0; "
    "SetLight 2, 3, 5 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 -1 -1 0 0 0 0 0 0 0; "
    "SetLight 3, 3, 5 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 1 0 0 0 0 0 0 0");

/// A frame at rest on a device that is there: all lights off, a pair on; black; then each material,
/// with its own colour as the ambient one.
Lines LevelFrame(const std::string& sLights) {
  return Calls(
      "TestCooperativeLevel; SetTransform 256, 4 0 0 0 0 4 0 0 0 0 4 0 0 0 0 1; "
      "SetTransform 2, -1 0 0 0 0 1 0 0 0 0 -1 0 -0 -0 90 1; LightEnable 0, 0; LightEnable 1, 0; "
      "LightEnable 2, 0; LightEnable 3, 0; " +
      sLights +
      "; Clear 0, 0, 1, 0, 1, 0; BeginScene; SetMaterial 0x1p-1 0x1p-2 0x1p-3 1 "
      "0x1p-1 0x1p-2 0x1p-3 1 4 5 6 7 7 6 5 4 8; SetTexture 0, C:\\Games\\front.png; "
      "DrawSubset 0; SetMaterial 1 0 1 0 1 0 1 0 0 0 0 0 0 0 0 0 0; SetTexture 0, none; "
      "DrawSubset 1; EndScene; Present 0, 0, 0, 0");
}
const Lines levelInWhite = LevelFrame("LightEnable 0, 1; LightEnable 1, 1");
const Lines levelInRed = LevelFrame("LightEnable 2, 1; LightEnable 3, 1");

/// A program whose model has a textured and a plain material.
struct ViewProgram : Program {
  ViewProgram() {
    dx8vb.bPresent = true;
    dx8vb.model.materials = {
        {{{0.5F, 0.25F, 0.125F, 1}, {9, 9, 9, 9}, {4, 5, 6, 7}, {7, 6, 5, 4}, 8}, "front.png"},
        {{{1, 0, 1, 0}, {}, {}, {}, 0}, ""}};
  }
  /// The calls for a paint request.
  Lines Paint() {
    Take();
    Window().Paint();
    return Take();
  }
};

TEST(View, StartSetsItUpShowsTheWindowAndDrawsTheModelLevel) {
  ViewProgram p;
  const Lines expected = Lines{"frmMain.Height 7005"} + setup + Lines{"frmMain.Show"} +
                         levelInWhite + Lines{"timer0.Interval 1000"};
  const Lines start = p.Start();
  EXPECT_FALSE(std::ranges::search(start, expected).empty()) << testing::PrintToString(start);
  EXPECT_EQ(start.back(), "sckUDP.Bind 5000");  // a window that is shown is not activated again
  p.Window().Close(platform::UnloadReason::AppWindows);
  const Lines end = p.Take();
  EXPECT_EQ(Lines(end.end() - 3, end.end()),
            Lines({"CloseHandle 42", "IDirect3D8 released", "DirectX8 released"}));
}

TEST(View, DatagramIsDrawnBeforeItsLightIsSwitched) {
  ViewProgram p;
  p.Start({{"samples", "0"}});    // without smoothing
  EXPECT_EQ(p.Paint(), Lines{});  // with a signal the next datagram redraws
  p.tmrCheck().Elapse();
  p.Take();
  p.Arrive({.x = 150, .y = 0, .z = 0, .zr = 150, .b = 0});
  EXPECT_THAT(p.Take(), IsSupersetOf({"SetTransform 256, -0x1.5dde98p-21 4 0 0 "
                                      "0x1.777a5cp-23 0x1.009426p-45 -4 0 "
                                      "-4 -0x1.5dde98p-21 -0x1.777a5cp-23 0 0 0 0 1",
                                      "SetTransform 2, -0x1.6a09e6p-1 0x1.a20bd8p-2 "
                                      "0x1.279a74p-1 0 0 0x1.a20bd6p-1 -0x1.279a76p-1 0 "
                                      "-0x1.6a09e6p-1 -0x1.a20bd8p-2 -0x1.279a74p-1 0 "
                                      "-0 -0 0x1.37c4e8p+7 1",
                                      "LightEnable 2, 1"}));
}

TEST(View, WhateverTheSetupLacksTheTextDisplayTakesItsPlaceForGood) {
  const Lines whole = ViewProgram().Start();
  const auto first = std::ranges::find(whole, setup.front()) - whole.begin();
  for (std::size_t k = 2; k <= setup.size(); ++k) {
    ViewProgram broken;
    broken.log.FailAt(static_cast<std::size_t>(first) + k);
    const Lines calls = broken.Start();
    EXPECT_THAT(calls, IsSupersetOf({"DirectX8 released", "picSurface.Visible 0"})) << k;
    broken.Arrive({.x = 100});
    broken.tmrCheck().Elapse();
    EXPECT_THAT(broken.Paint(), Contains("lblX.Caption 100 (50)")) << k;
  }
}

TEST(View, WhateverFailsInAFrameEndsItAndTheNextIsWhole) {
  ViewProgram p;
  p.Start();
  p.tmrCheck().Elapse();
  for (std::size_t k = 1; k <= levelInRed.size(); ++k) {
    p.Take();
    p.log.FailAt(k);
    p.Window().Paint();
    EXPECT_EQ(p.Take().size(), k);
    EXPECT_EQ(p.Paint(), levelInRed) << k;
  }
}

TEST(View, DeviceThatWaitsForAResetIsMadeAnewByTheNextRequest) {
  ViewProgram p;
  p.Start();
  p.tmrCheck().Elapse();
  p.dx8vb.adapter.device.lock()->lCooperativeLevel = platform::D3DERR_DEVICELOST;
  EXPECT_EQ(p.Paint(), levelInRed);  // drawing goes on until the platform refuses
  p.dx8vb.adapter.device.lock()->lCooperativeLevel = platform::D3DERR_DEVICENOTRESET;
  EXPECT_EQ(p.Paint(), Lines({"TestCooperativeLevel", "frmMain.Hide", "IDirect3D8 released",
                              "DirectX8 released"}));
  Lines again = setup;
  std::erase(again, "NewStdFont");  // the font object is still there
  EXPECT_EQ(p.Paint(), again + Lines(levelInRed.begin() + 1, levelInRed.end()));
}

}  // namespace
}  // namespace quillorbit
