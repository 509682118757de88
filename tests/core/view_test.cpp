#include <algorithm>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/program.h"

namespace quillorbit {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// The matrices' numbers were worked out apart from the program, with 300 bits, and rounded to
// 32-bit floats.
const std::string sLevel = "SetTransform 256, 4 0 0 0 0 4 0 0 0 0 4 0 0 0 0 1";
const std::string sEyeInFront = "SetTransform 2, -1 0 0 0 0 1 0 0 0 0 -1 0 -0 -0 90 1";
const std::string sNoColour = "0 0 0 0";

const Lines setup = {
    "NewDirectX8", "Direct3DCreate", "NewD3DX8", "GetAdapterDisplayMode 0",
    "CheckDeviceFormat 0, 1, 22, 2, 1, 80",
    "CreateDevice 0, 1, 2001, 32, 0 0 22 0 0 4 0 1 0 80 0 0 0",
    // lighting, depth buffering, ambient light, linear filters
    "SetRenderState 137, 1", "SetRenderState 7, 1", "SetRenderState 139, 2105376",
    "SetTextureStageState 0, 16, 2", "SetTextureStageState 0, 17, 2",
    "SetTransform 256, 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", sEyeInFront,
    "SetTransform 3, 0x1.3504f2p+1 0 0 0 0 0x1.3504f2p+1 0 0 0 0 0x1.000d1cp+0 1 "
    "0 0 -0x1.99ae94p-4 0",
    "NewStdFont", "StdFont.Name = Verdana", "StdFont.Size = 12", "CreateFont device, 77",
    "LoadMeshFromX C:\\Games\\testPlane.x, 544, device",
    "CreateTextureFromFileEx device, C:\\Games\\front.png, 128, 128, 4294967295, 0, 0, 1, 3, 3, 0",
    "SetMaterial 1 1 1 1, 1 1 1 1, 0 0 0 0, 0 0 0 0, 0",
    "SetLight 0, 3, 3 3 3 0, 0 0 0 0, 0 0 0 0, 0 0 0, 0 -1 -1, 0 0 0 0 0 0 0",
    "SetLight 1, 3, 3 3 3 0, 0 0 0 0, 0 0 0 0, 0 0 0, 0 1 1, 0 0 0 0 0 0 0",
    "SetLight 2, 3, 5 0 0 0, 0 0 0 0, 0 0 0 0, 0 0 0, 0 -1 -1, 0 0 0 0 0 0 0",
    "SetLight 3, 3, 5 0 0 0, 0 0 0 0, 0 0 0 0, 0 0 0, 0 1 1, 0 0 0 0 0 0 0"};

enum class Light { White = 0, Red = 2 };

/// The drawing of a frame, once the device is there.
Lines Frame(const std::string& sWorld, const std::string& sView, Light eLight,
            const Lines& overlay = {}) {
  const int iLight = static_cast<int>(eLight);
  Lines lines = {sWorld, sView, "LightEnable 0, 0", "LightEnable 1, 0", "LightEnable 2, 0",
                 "LightEnable 3, 0", "LightEnable " + std::to_string(iLight) + ", 1",
                 "LightEnable " + std::to_string(iLight + 1) + ", 1",
                 // black; then each material, whose own ambient colour has given way
                 "Clear 0, 0, 1, 0, 1, 0", "BeginScene",
                 "SetMaterial 0x1p-1 0x1p-2 0x1p-3 1, 0x1p-1 0x1p-2 0x1p-3 1, 4 5 6 7, 7 6 5 4, 8",
                 "SetTexture 0, C:\\Games\\front.png", "DrawSubset 0",
                 "SetMaterial 1 0 1 0, 1 0 1 0, 0 0 0 0, 0 0 0 0, 0", "SetTexture 0, none",
                 "DrawSubset 1"};
  lines.insert(lines.end(), overlay.begin(), overlay.end());
  lines.insert(lines.end(), {"EndScene", "Present 0, 0, 0, 0"});
  return lines;
}

Lines Tested(const Lines& frame) {
  Lines lines = {"TestCooperativeLevel"};
  lines.insert(lines.end(), frame.begin(), frame.end());
  return lines;
}

bool IsOfTheView(const std::string& sCall) {
  static const Lines others = {"frmMain.",        "lbl",    "pic",       "timer",
                               "DeviceIoControl", "Shell_", "LoadImage", "SendMessage"};
  return std::none_of(others.begin(), others.end(),
                      [&](const std::string& s) { return sCall.starts_with(s); });
}

struct ViewTest : testing::Test {
  ViewTest() {
    p.platform.dx8vb.bPresent = true;
    p.platform.dx8vb.model.materials = {
        {{{0.5F, 0.25F, 0.125F, 1}, {9, 9, 9, 9}, {4, 5, 6, 7}, {7, 6, 5, 4}, 8}, "front.png"},
        {{{1, 0, 1, 0}, {}, {}, {}, 0}, ""}};
  }
  /// Without smoothing, so that the angles are those of the datagram.
  void Start(const std::string& sOverlay = "0") {
    p.platform.StoreProfile({{"samples", "0"}, {"debug", sOverlay}});
    p.Start();
  }
  /// What the view was asked for, of all that happened.
  Lines TakeView() {
    Lines lines = p.Take();
    std::erase_if(lines, [](const std::string& s) { return !IsOfTheView(s); });
    return lines;
  }
  /// The watchdog's tick, which finds no signal.
  Lines Tick() {
    p.Take();
    p.platform.tmrCheck().Elapse();
    return TakeView();
  }
  Program p;
};

TEST_F(ViewTest, StartSetsTheViewUpShowsTheWindowAndDrawsItLevel) {
  p.Take();
  p.main.Form_Load();
  const Lines all = p.Take();
  Lines expected = {"frmMain.Height = 7005"};
  expected.insert(expected.end(), setup.begin(), setup.end());
  expected.push_back("frmMain.Show");
  const Lines frame = Tested(Frame(sLevel, sEyeInFront, Light::White));
  expected.insert(expected.end(), frame.begin(), frame.end());
  expected.push_back("timer0.Interval = 1000");
  const auto found = std::search(all.begin(), all.end(), expected.begin(), expected.end());
  EXPECT_NE(found, all.end()) << testing::PrintToString(all);
  EXPECT_TRUE(p.platform.Get<fakes::FakePictureBox>("picSurface").bVisible);
}

TEST_F(ViewTest, WithoutDepthFormatTheSoftwareDeviceIsTaken) {
  p.platform.dx8vb.lFormatResult = platform::D3DERR_NOTAVAILABLE;
  p.Take();
  p.main.Form_Load();
  EXPECT_THAT(p.Take(), Contains("CreateDevice 0, 3, 2001, 32, 0 0 22 0 0 4 0 1 0 80 0 0 0"));
}

TEST_F(ViewTest, DatagramTurnsTheModelAndMovesTheCamera) {
  Start();
  p.platform.Arrive({.x = 150, .y = 0, .z = 0, .zr = 150, .b = 0});
  EXPECT_EQ(TakeView(),
            Tested(Frame("SetTransform 256, -0x1.5dde98p-21 4 0 0 "
                         "0x1.777a5cp-23 0x1.009426p-45 -4 0 -4 -0x1.5dde98p-21 -0x1.777a5cp-23 0 "
                         "0 0 0 1",
                         "SetTransform 2, -0x1.6a09e6p-1 0x1.a20bd8p-2 0x1.279a74p-1 0 "
                         "0 0x1.a20bd6p-1 -0x1.279a76p-1 0 "
                         "-0x1.6a09e6p-1 -0x1.a20bd8p-2 -0x1.279a74p-1 0 -0 -0 0x1.37c4e8p+7 1",
                         Light::White)));
  p.platform.Arrive({.x = 100, .y = 120, .z = 0, .zr = 150, .b = 0});
  EXPECT_THAT(TakeView(), Contains("SetTransform 256, 0x1.bb67aep+1 0x1.000002p+1 0 0 "
                                   "-0x1.2cf22ep+0 0x1.04a07ap+1 0x1.9e377cp+1 0 "
                                   "0x1.9e378p+0 -0x1.66b8e2p+1 0x1.2cf22cp+1 0 0 0 0 1"));
}

TEST_F(ViewTest, LightIsRedWithoutASignalAndUntilTheFirstDatagramIsDrawn) {
  Start();
  EXPECT_EQ(Tick(), Tested(Frame(sLevel, sEyeInFront, Light::Red)));
  const auto arrive = [&] {
    p.platform.Arrive({.x = 75, .y = 75, .z = 75, .zr = 75, .b = 0});
    return TakeView();
  };
  EXPECT_THAT(arrive(), Contains("LightEnable 2, 1"));
  EXPECT_THAT(arrive(), Contains("LightEnable 0, 1"));

  // Painting redraws while there is no signal, and only then.
  p.platform.Window().Paint();
  EXPECT_THAT(TakeView(), IsEmpty());
  Tick();
  p.platform.Window().Paint();
  EXPECT_EQ(TakeView(), Tested(Frame(sLevel, sEyeInFront, Light::Red)));
}

TEST_F(ViewTest, HiddenWindowAsksForNoFrameUntilTheTrayShowsIt) {
  Start();
  p.Hide();
  p.platform.Arrive({.x = 1, .y = 2, .z = 3, .zr = 4, .b = 5});
  EXPECT_THAT(TakeView(), IsEmpty());
  p.platform.Tray().MouseMove(514);  // left button up on the icon
  EXPECT_EQ(TakeView(), Tested(Frame(sLevel, sEyeInFront, Light::White)));
}

TEST_F(ViewTest, OverlayHasSevenLinesOverTheModel) {
  Start("1");
  p.platform.Arrive({.x = 100, .y = -7, .z = 10, .zr = 20, .b = INT32_MIN});
  const Lines lines = TakeView();
  const Lines overlay = {"DrawText font, ffffcc00, Filter: 0 | 0 20 280 40 | 0",
                         "DrawText font, ffffcc00, Packets received: 1 (0/s) | 0 40 280 60 | 0",
                         "DrawText font, ffffcc00, X:100 (0) | 0 60 280 80 | 0",
                         "DrawText font, ffffcc00, Y:-7 (0) | 0 80 280 100 | 0",
                         "DrawText font, ffffcc00, Z:10 | 0 100 280 120 | 0",
                         "DrawText font, ffffcc00, Zr:20 | 0 120 280 140 | 0",
                         "DrawText font, ffffcc00, Buttons: -2147483648 | 0 140 280 160 | 0"};
  const Lines frame = Frame("", "", Light::White, overlay);
  ASSERT_EQ(lines.size(), frame.size() + 1);
  EXPECT_TRUE(std::equal(lines.begin() + 3, lines.end(), frame.begin() + 2))
      << testing::PrintToString(lines);
}

TEST_F(ViewTest, ModelWithoutMaterialsIsABlackPicture) {
  p.platform.dx8vb.model.materials.clear();
  p.Start();
  EXPECT_THAT(Tick(), Not(Contains(StartsWith("DrawSubset"))));
  EXPECT_THAT(Tick(), Contains("Present 0, 0, 0, 0"));
}

TEST_F(ViewTest, WhateverTheSetupLacksTheTextDisplayTakesItsPlaceForGood) {
  const auto expectText = [](Program& broken, const std::string& sWhat) {
    EXPECT_FALSE(broken.platform.Get<fakes::FakePictureBox>("picSurface").bVisible) << sWhat;
    EXPECT_EQ(broken.platform.Caption("lblPacketLabel"), "Packets received: ") << sWhat;
    broken.Take();
    broken.platform.Arrive({.x = 100, .b = INT32_MIN});
    broken.platform.tmrCheck().Elapse();
    broken.platform.Window().Paint();
    for (const std::string& sCall : broken.Take())
      EXPECT_FALSE(IsOfTheView(sCall)) << sWhat << ": " << sCall;
    EXPECT_EQ(broken.platform.Caption("lblX"), "100 (50)") << sWhat;
    EXPECT_EQ(broken.platform.Caption("lblButtons"), "-2147483648") << sWhat;
  };
  p.Take();
  p.main.Form_Load();
  const Lines whole = p.Take();
  const auto first = std::find(whole.begin(), whole.end(), setup.front()) - whole.begin();
  Lines calls;
  for (std::size_t k = 0; k < setup.size(); ++k) {
    Program broken;
    broken.platform.dx8vb.bPresent = true;
    broken.platform.dx8vb.model = p.platform.dx8vb.model;
    broken.Take();
    broken.platform.log.FailAt(static_cast<std::size_t>(first) + k + 1);
    broken.main.Form_Load();
    calls = broken.Take();
    EXPECT_THAT(calls, Not(Contains(StartsWith("MsgBox")))) << setup[k];
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "NewDirectX8"), 1) << setup[k];
    expectText(broken, setup[k]);
  }
  EXPECT_THAT(calls, Contains("mesh released"));  // what was made goes with the setup
  Program modelLess;
  modelLess.platform.dx8vb.bPresent = true;
  modelLess.platform.dx8vb.model.bHasMesh = false;
  modelLess.main.Form_Load();
  expectText(modelLess, "no mesh");
}

TEST_F(ViewTest, WhateverFailsInAFrameEndsItAndTheNextIsWhole) {
  Start();
  const Lines whole = Tick();
  for (std::size_t k = 0; k < whole.size(); ++k) {
    p.platform.log.FailAt(k + 1);
    p.platform.Window().Paint();
    const Lines lines = p.Take();
    EXPECT_EQ(lines, Lines(whole.begin(), whole.begin() + static_cast<long>(k) + 1));
    p.platform.Window().Paint();
    EXPECT_EQ(p.Take(), whole) << whole[k];
  }
}

TEST_F(ViewTest, LostDeviceGoesOnUntilThePlatformRefuses) {
  Start();
  p.platform.dx8vb.Device()->lCooperativeLevel = platform::D3DERR_DEVICELOST;
  EXPECT_EQ(Tick(), Tested(Frame(sLevel, sEyeInFront, Light::Red)));
  EXPECT_TRUE(p.platform.Window().bVisible);
}

TEST_F(ViewTest, DeviceThatWaitsForAResetIsMadeAnewByTheNextRequest) {
  Start();
  Tick();
  p.platform.dx8vb.Device()->lCooperativeLevel = platform::D3DERR_DEVICENOTRESET;
  p.platform.Window().Paint();
  EXPECT_THAT(p.Take(), ElementsAre("TestCooperativeLevel", "frmMain.Hide", "IDirect3D8 released",
                                    "DirectX8 released"));
  EXPECT_FALSE(p.platform.Window().bVisible);

  // A setup that fails draws nothing, and each request tries again; the font object is still there.
  Lines again = setup;
  std::erase(again, "NewStdFont");
  for (const std::size_t nFailing : {std::size_t{1}, std::size_t{6}, again.size()}) {
    p.platform.log.FailAt(nFailing);
    p.platform.Window().Paint();
    Lines lines = p.Take();
    std::erase_if(lines, [](const std::string& s) { return s.ends_with("released"); });
    Lines expected(again.begin(), again.begin() + static_cast<long>(nFailing));
    EXPECT_EQ(lines, expected);
  }
  p.platform.Window().Paint();
  Lines expected = again;
  const Lines frame = Frame(sLevel, sEyeInFront, Light::Red);
  expected.insert(expected.end(), frame.begin(), frame.end());
  EXPECT_EQ(p.Take(), expected);
}

TEST_F(ViewTest, ShutdownReleasesTheDeviceLast) {
  Start();
  p.platform.Window().Close(platform::UnloadReason::AppWindows);
  const Lines lines = p.Take();
  EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
            (Lines{"CloseHandle 42", "IDirect3D8 released", "DirectX8 released"}));
}

}  // namespace
}  // namespace quillorbit
