// The 3D view of the whole program.

#include <algorithm>

#include "core/program.h"

namespace quillorbit {
namespace {

using testing::Contains;
using testing::Not;
using testing::StartsWith;

// The matrices' numbers were worked out apart from the program, with 300 bits, and rounded to
// 32-bit floats.
const std::string sLevel = "SetTransform 256, 4 0 0 0 0 4 0 0 0 0 4 0 0 0 0 1";
const std::string sEyeInFront = "SetTransform 2, -1 0 0 0 0 1 0 0 0 0 -1 0 -0 -0 90 1";
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

enum class Light { White, Red };

/// A frame on a device that is there: all lights off, a pair on; black; then each material, with
/// its own colour as the ambient one.
Lines Frame(const std::string& sWorld, const std::string& sView, Light eLight,
            const Lines& overlay = {}) {
  const std::string s = eLight == Light::White ? "LightEnable 0, 1; LightEnable 1, 1; "
                                               : "LightEnable 2, 1; LightEnable 3, 1; ";
  return Calls("TestCooperativeLevel; " + sWorld + "; " + sView + "; LightEnable 0, 0; " +
               "LightEnable 1, 0; LightEnable 2, 0; LightEnable 3, 0; " + s +
               "Clear 0, 0, 1, 0, 1, 0; BeginScene; SetMaterial 0x1p-1 0x1p-2 0x1p-3 1 "
               "0x1p-1 0x1p-2 0x1p-3 1 4 5 6 7 7 6 5 4 8; SetTexture 0, C:\\Games\\front.png; "
               "DrawSubset 0; SetMaterial 1 0 1 0 1 0 1 0 0 0 0 0 0 0 0 0 0; SetTexture 0, none; "
               "DrawSubset 1") +
         overlay + Calls("EndScene; Present 0, 0, 0, 0");
}
const Lines levelInWhite = Frame(sLevel, sEyeInFront, Light::White);
const Lines levelInRed = Frame(sLevel, sEyeInFront, Light::Red);

/// A program whose model has a textured and a plain material.
struct ViewProgram : Program {
  ViewProgram() {
    dx8vb.bPresent = true;
    dx8vb.model.materials = {
        {{{0.5F, 0.25F, 0.125F, 1}, {9, 9, 9, 9}, {4, 5, 6, 7}, {7, 6, 5, 4}, 8}, "front.png"},
        {{{1, 0, 1, 0}, {}, {}, {}, 0}, ""}};
  }
  /// Without smoothing, so that the angles are those of the datagram.
  void Start(const std::string& sOverlay = "0") {
    Program::Start({{"samples", "0"}, {"debug", sOverlay}});
  }
  /// The calls of the view, out of all calls.
  Lines TakeView() {
    Lines lines = Take();
    std::erase_if(lines, [](const std::string& s) {
      return std::ranges::any_of(
          Lines({"frmMain.", "lbl", "timer", "DeviceIoControl", "Shell_", "LoadImage", "SendMess"}),
          [&](const std::string& sOther) { return s.starts_with(sOther); });
    });
    return lines;
  }
  /// The view's calls for a paint request.
  Lines Paint() {
    Take();
    Window().Paint();
    return TakeView();
  }
};

struct ViewTest : testing::Test {
  ViewProgram p;
};

TEST_F(ViewTest, StartSetsTheViewUpShowsTheWindowAndDrawsItLevel) {
  const Lines all = p.Program::Start();
  const Lines expected = Lines{"frmMain.Height 7005"} + setup + Lines{"frmMain.Show"} +
                         levelInWhite + Lines{"timer0.Interval 1000"};
  EXPECT_FALSE(std::ranges::search(all, expected).empty()) << testing::PrintToString(all);
  EXPECT_EQ(all.back(), "sckUDP.Bind 5000");  // a window that is shown is not activated again
  p.Window().Close(platform::UnloadReason::AppWindows);
  const Lines end = p.Take();
  EXPECT_EQ(Lines(end.end() - 3, end.end()),
            Lines({"CloseHandle 42", "IDirect3D8 released", "DirectX8 released"}));
}

TEST_F(ViewTest, WithoutDepthFormatTheSoftwareDeviceIsTaken) {
  p.dx8vb.adapter.lFormatResult = platform::D3DERR_NOTAVAILABLE;
  EXPECT_THAT(p.Program::Start(), Contains(StartsWith("CreateDevice 0, 3, 2001")));
}

TEST_F(ViewTest, DatagramTurnsTheModelAndMovesTheCamera) {
  p.Start();
  p.Arrive({.x = 150, .y = 0, .z = 0, .zr = 150, .b = 0});
  EXPECT_EQ(p.TakeView(), Frame("SetTransform 256, -0x1.5dde98p-21 4 0 0 "
                                "0x1.777a5cp-23 0x1.009426p-45 -4 0 "
                                "-4 -0x1.5dde98p-21 -0x1.777a5cp-23 0 0 0 0 1",
                                "SetTransform 2, -0x1.6a09e6p-1 0x1.a20bd8p-2 0x1.279a74p-1 0 "
                                "0 0x1.a20bd6p-1 -0x1.279a76p-1 0 "
                                "-0x1.6a09e6p-1 -0x1.a20bd8p-2 -0x1.279a74p-1 0 "
                                "-0 -0 0x1.37c4e8p+7 1",
                                Light::White));
  p.Hide();
  p.Arrive({.x = 1, .y = 2, .z = 3, .zr = 4, .b = 5});
  EXPECT_EQ(p.TakeView(), Lines{});
  p.Tray().MouseMove(514);  // left button up on the icon
  EXPECT_EQ(p.TakeView(), levelInWhite);
}

TEST_F(ViewTest, LightIsRedUntilTheFirstDatagramIsDrawn) {
  p.Start();
  EXPECT_EQ(p.Paint(), Lines{});  // with a signal the next datagram redraws
  p.tmrCheck().Elapse();
  EXPECT_EQ(p.TakeView(), levelInRed);
  EXPECT_EQ(p.Paint(), levelInRed);
  for (const char* sLight : {"LightEnable 2, 1", "LightEnable 0, 1"}) {
    p.Arrive({});
    EXPECT_THAT(p.TakeView(), Contains(sLight));
  }
}

TEST_F(ViewTest, OverlayHasSevenLinesOverTheModel) {
  p.Start("1");
  p.Arrive({.x = 75, .y = 75, .z = 10, .zr = 20, .b = INT32_MIN});
  Lines overlay = Calls(
      "Filter: 0; Packets received: 1 (0/s); X:75 (0); Y:75 (0); Z:10; Zr:20; Buttons: "
      "-2147483648");
  for (std::size_t i = 0; i < overlay.size(); ++i)
    overlay[i] = "DrawText font, 4294953984, " + overlay[i] + ", 0, " +
                 std::to_string(20 + 20 * i) + ", 280, " + std::to_string(40 + 20 * i) + ", 0";
  const Lines lines = p.TakeView(), frame = Frame("", "", Light::White, overlay);
  EXPECT_EQ(Lines(lines.begin() + 3, lines.end()), Lines(frame.begin() + 3, frame.end()));
}

TEST_F(ViewTest, WhateverTheSetupLacksTheTextDisplayTakesItsPlaceForGood) {
  const Lines whole = p.Program::Start();
  const auto first = std::ranges::find(whole, setup.front()) - whole.begin();
  for (std::size_t k = 0; k <= setup.size(); ++k) {  // the last time there is no mesh in the file
    ViewProgram broken;
    broken.dx8vb.model.bHasMesh = k < setup.size();
    if (k < setup.size()) broken.log.FailAt(static_cast<std::size_t>(first) + k + 1);
    const Lines calls = broken.Program::Start();
    EXPECT_THAT(calls, Not(Contains(StartsWith("MsgBox")))) << k;
    EXPECT_THAT(calls, Contains("picSurface.Visible 0")) << k;
    if (k == 0 || k == setup.size()) continue;
    EXPECT_THAT(calls, Contains("DirectX8 released")) << k;
    broken.Arrive({.x = 100});
    broken.tmrCheck().Elapse();
    EXPECT_EQ(broken.Paint(), Lines{}) << k;
    EXPECT_EQ(broken.Caption("lblX"), "100 (50)") << k;
  }
}

TEST_F(ViewTest, WhateverFailsInAFrameEndsItAndTheNextIsWhole) {
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

TEST_F(ViewTest, DeviceThatWaitsForAResetIsMadeAnewByTheNextRequest) {
  p.Start();
  p.tmrCheck().Elapse();
  const auto device = [&] { return p.dx8vb.adapter.device.lock(); };
  device()->lCooperativeLevel = platform::D3DERR_DEVICELOST;
  EXPECT_EQ(p.Paint(), levelInRed);  // drawing goes on until the platform refuses
  device()->lCooperativeLevel = platform::D3DERR_DEVICENOTRESET;
  p.Window().Paint();
  EXPECT_EQ(p.Take(), Lines({"TestCooperativeLevel", "frmMain.Hide", "IDirect3D8 released",
                             "DirectX8 released"}));
  // A setup that fails draws nothing, and each request tries again; the font object is still there.
  Lines again = setup;
  std::erase(again, "NewStdFont");
  for (const std::size_t nFailing : {std::size_t{6}, again.size()}) {
    p.log.FailAt(nFailing);
    p.Window().Paint();
    Lines lines = p.Take();
    std::erase_if(lines, [](const std::string& s) { return s.ends_with("released"); });
    EXPECT_EQ(lines, Lines(again.begin(), again.begin() + static_cast<long>(nFailing)));
  }
  EXPECT_EQ(p.Paint(), again + Lines(levelInRed.begin() + 1, levelInRed.end()));
}

}  // namespace
}  // namespace quillorbit
