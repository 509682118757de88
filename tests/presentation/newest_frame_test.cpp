#include "platform/presentation/newest_frame.h"

#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

#include "fakes/dx8vb.h"
#include "platform/presentation/text.h"

namespace quillorbit::presentation {
namespace {

using namespace std::chrono_literals;
using namespace platform;
using fakes::i32;
using fakes::u32;
using Lines = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

/// What the drawing thread does, seen from the test's thread.
struct Driver {
  /// Called on the drawing thread for a frame that is shown. Stays there while the driver hangs.
  void Show(Lines frame) {
    std::unique_lock lock(mutex);
    shown.push_back(std::move(frame));
    changed.notify_all();
    changed.wait(lock, [this] { return !bHangs; });
  }
  void Hang(bool bHang) {
    const std::lock_guard lock(mutex);
    bHangs = bHang;
    changed.notify_all();
  }
  template <class Condition>
  bool Comes(Condition condition) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, 20s, condition);
  }
  bool Shows(const Lines& frame) {
    return Comes([&] { return !shown.empty() && shown.back() == frame; });
  }

  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Lines> shown;
  bool bHangs = false, bReleased = false;
  int nTests = 0;
  i32 lCooperativeLevel = D3D_OK;
};

/// A recording device that hands over what it has recorded with each Present.
struct Behind : fakes::FakeDirect3DDevice {
  Behind(fakes::CallLog& l, Driver& d) : FakeDirect3DDevice(l), driver(d) {}
  ~Behind() override {
    const std::lock_guard lock(driver.mutex);
    driver.bReleased = true;
    driver.changed.notify_all();
  }
  i32 TestCooperativeLevel() override {
    const std::lock_guard lock(driver.mutex);
    ++driver.nTests;
    driver.changed.notify_all();
    return driver.lCooperativeLevel;
  }
  void Present(const RECT*, const RECT*, WindowHandle, const void*) override {
    Call("Present");
    driver.Show(log.Take());
  }
  Driver& driver;
};

struct NewestFrameTest : testing::Test {
  /// A frame that only its vertex shader tells from others.
  void Draw(int nFrame) {
    device->Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF, 1, 7);
    device->SetVertexShader(static_cast<u32>(nFrame));
    device->BeginScene();
    device->EndScene();
    device->Present(nullptr, nullptr, 0, nullptr);
  }
  static Lines Drawn(int nFrame, Lines before = {}) {
    for (const char* sCall :
         {"Clear 0, 0, 1, 255, 1, 7", "SetVertexShader ", "BeginScene", "EndScene", "Present"})
      before.emplace_back(sCall);
    before[before.size() - 4] += std::to_string(nFrame);
    return before;
  }
  /// After the next frames' states were given up for this one's.
  static std::string Left(int nFrame) { return "SetVertexShader " + std::to_string(nFrame); }

  fakes::CallLog log;
  fakes::FakeModel model;
  Driver driver;
  bool bSeen = true;
  DrawingThreads threads{{.giveUp = [this] { driver.Hang(false); }}};
  std::shared_ptr<NewestFrameDevice> device = std::make_shared<NewestFrameDevice>(
      std::make_shared<Behind>(log, driver), threads, [this] { return bSeen; });
};

TEST_F(NewestFrameTest, SetupIsAnsweredAtOnceAndAFrameIsDrawnBesideWithItsTexts) {
  log.FailAt(1);
  EXPECT_THROW(device->SetRenderState(D3DRS_AMBIENT, 1), std::system_error);
  log.Take();
  device->SetRenderState(D3DRS_AMBIENT, 2);
  const auto library = DrawTextsLater(std::make_shared<fakes::FakeD3DX8>(log, model));
  const auto font = library->CreateFont(device, 5);
  EXPECT_EQ(log.Take(), Lines{"SetRenderState 139, 2"});

  device->Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF, 1, 7);
  EXPECT_EQ(device->GetRenderState(D3DRS_AMBIENT), 2U);
  device->SetRenderState(D3DRS_AMBIENT, 3);
  EXPECT_EQ(device->GetRenderState(D3DRS_AMBIENT), 3U);
  EXPECT_THROW(device->SetTextureStageState(1, D3DTSS_COLOROP, 1), D3DError);
  const float vertices[] = {1, 2, 3};
  device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, vertices, 4);
  library->DrawText(font, 0xFFCC00, "X:75", {0, 20, 280, 40}, 0);
  library->DrawText(font, 0xFFCC00, "Y:7", {0, 40, 280, 60}, 0);
  device->Present(nullptr, nullptr, 0, nullptr);

  EXPECT_TRUE(
      driver.Shows({"Clear 0, 0, 1, 255, 1, 7", "SetRenderState 139, 3", "DrawPrimitiveUP 4, 1, 4",
                    "CreateFont device, 5", "DrawText font, 16763904, X:75, 0, 20, 280, 40, 0",
                    "DrawText font, 16763904, Y:7, 0, 40, 280, 60, 0", "Present"}));
}

TEST_F(NewestFrameTest, ADriverThatHangsHoldsUpNoFrameButThePicture) {
  driver.Hang(true);
  Draw(1);
  ASSERT_TRUE(driver.Shows(Drawn(1)));
  for (int i = 2; i <= 1000; ++i) {
    device->LightEnable(static_cast<u32>(i % 2), i % 3 == 0);
    Draw(i);
  }
  driver.Hang(false);
  EXPECT_TRUE(driver.Shows(Drawn(1000, {"LightEnable 0, 0", Left(999), "LightEnable 1, 1"})));
  EXPECT_EQ(driver.shown.size(), 2U);
}

TEST_F(NewestFrameTest, FramesComeAtTheDisplaysRateAndTheNewestIsNeverLost) {
  const auto begin = Clock::now();
  for (int i = 1; i <= 300; ++i, std::this_thread::sleep_for(1ms)) Draw(i);
  EXPECT_TRUE(driver.Comes([&] { return driver.shown.back().end()[-4] == Left(300); }));
  EXPECT_LE(driver.shown.size(), 3U + static_cast<std::size_t>((Clock::now() - begin) / 16ms));
}

TEST_F(NewestFrameTest, AHiddenSurfaceKeepsTheNewestFrameUntilItIsShown) {
  bSeen = false;
  for (int i = 1; i <= 3; ++i) {
    Draw(i);
    ASSERT_TRUE(driver.Comes([&] { return driver.nTests >= i; }));  // the device is looked after
  }
  device->ShowAgain();  // not while it is hidden
  ASSERT_TRUE(driver.Comes([&] { return driver.nTests >= 4; }));
  EXPECT_EQ(driver.shown.size(), 0U);
  bSeen = true;
  device->ShowAgain();
  EXPECT_TRUE(driver.Shows(Drawn(3, {Left(2)})));
}

TEST_F(NewestFrameTest, APictureThatIsThereAlreadyIsNotDrawnAgain) {
  for (int i = 1; i <= 9; ++i) {
    Draw(4);
    ASSERT_TRUE(driver.Comes([&] { return driver.nTests >= i; }));
  }
  EXPECT_EQ(driver.shown, std::vector<Lines>(2, Drawn(4)));  // the first had other states before
  device->ShowAgain();
  EXPECT_TRUE(driver.Shows({"Present"}));
  Draw(5);
  EXPECT_TRUE(driver.Shows(Drawn(5)));
}

TEST_F(NewestFrameTest, AFailureDropsItsFrameAndTheStateOfTheDeviceIsReported) {
  log.FailAt(3);
  Draw(1);
  ASSERT_TRUE(driver.Comes([&] { return driver.nTests == 2; }));
  EXPECT_EQ(log.Take().size(), 3U);
  Draw(2);
  EXPECT_TRUE(driver.Shows(Drawn(2)));
  {
    const std::lock_guard lock(driver.mutex);
    driver.lCooperativeLevel = D3DERR_DEVICENOTRESET;
  }
  EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);  // as far as is known
  Draw(3);
  ASSERT_TRUE(driver.Comes([&] { return driver.nTests == 4; }));
  while (device->TestCooperativeLevel() == D3D_OK) std::this_thread::yield();
  EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICENOTRESET);
  EXPECT_EQ(driver.shown.size(), 1U);
}

TEST_F(NewestFrameTest, AReleasedDeviceShowsNothingMoreAndGoesWhenItsDriverIsDone) {
  driver.Hang(true);
  Draw(1);
  ASSERT_TRUE(driver.Shows(Drawn(1)));
  Draw(2);
  device.reset();
  EXPECT_FALSE(driver.bReleased);
  driver.Hang(false);
  EXPECT_TRUE(driver.Comes([&] { return driver.bReleased; }));
  EXPECT_EQ(driver.shown.size(), 1U);
}

TEST_F(NewestFrameTest, ADriverThatHangsAtTheProgramsEndIsGivenUp) {
  bool bGivenUp = false;
  {
    DrawingThreads ending({.giveUp = [&] {
      bGivenUp = true;
      driver.Hang(false);
    }});
    device = std::make_shared<NewestFrameDevice>(std::make_shared<Behind>(log, driver), ending,
                                                 [] { return true; });
    driver.Hang(true);
    Draw(1);
    ASSERT_TRUE(driver.Shows(Drawn(1)));
  }
  EXPECT_TRUE(bGivenUp);
  EXPECT_THROW(device->CreateTexture(1, 1, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED), D3DError);
}

}  // namespace
}  // namespace quillorbit::presentation
