#include <thread>

#include "e2e/desktop.h"
#include "e2e/screen.h"

namespace quillorbit::test {
namespace {

namespace fs = std::filesystem;

/// A desktop where the model lies beside the program.
struct ViewTest : Desktop {
  ViewTest() {
    for (const char* sFile :
         {"testPlane.x", "phone-back.png", "phone-edges.png", "phone-front.png"})
      fs::copy_file(fs::path(QUILLORBIT_RESOURCES) / sFile, m_folder / sFile);
  }
  /// How much of the view, from 0 to 1, has such a colour.
  static double Part(const std::function<bool(int nRed, int nGreen, int nBlue)>& isSuch) {
    constexpr int nPanelHeight = 40;
    double dPart = 0;
    for (const ScreenWindow& window : WindowsOnScreen()) {
      if (!window.sTitle.starts_with("Quillorbit")) continue;
      const std::string sPixels = Picture(window, 0, window.nHeight - nPanelHeight);
      const auto* pPixel = reinterpret_cast<const unsigned char*>(sPixels.data());
      for (std::size_t i = 0; i + 4 <= sPixels.size(); i += 4, pPixel += 4)
        if (isSuch(pPixel[2], pPixel[1], pPixel[0]))
          dPart += 4.0 / static_cast<double>(sPixels.size());
    }
    return dPart;
  }
  static double Red() {
    return Part([](int r, int g, int b) { return r > b + 60 && r > g + 60; });
  }
  static double Blue() {
    return Part([](int r, int, int b) { return b > r + 30; });
  }
  static bool ShowsSignal() { return Blue() > 0.1 && Red() == 0; }  // the phone's screen is blue
  static bool ShowsNoSignal() { return Red() > 0.1 && Blue() == 0; }
  static bool ShowsText() {
    return Part([](int r, int g, int b) { return r + g + b > 600; }) > 0.7;
  }
};

TEST_F(ViewTest, PhoneIsWhiteWithASignalRedWithoutAndComesBackAsItWas) {
  StartAll();
  ASSERT_TRUE(Eventually(ShowsNoSignal));
  EXPECT_GT(Part([](int r, int g, int b) { return r + g + b == 0; }), 0.4);
  EXPECT_TRUE(Eventually([&] {
    Send({.x = 75, .y = 75, .z = 75, .zr = 75, .b = 0});
    return ShowsSignal();
  }));
  EXPECT_TRUE(Eventually(ShowsNoSignal));
  Minimise();
  ASSERT_TRUE(Eventually([] { return !HasWindow("Quillorbit"); }));
  // A copy that is called as the window's title is must not take its own window for the first's.
  fs::create_symlink(m_program, m_folder / "Quillorbit");
  m_program = m_folder / "Quillorbit";
  StartSecondCopy();
  EXPECT_TRUE(Eventually(ShowsNoSignal));
}

TEST_F(ViewTest, BurstsAreReportedWholeAndInOrderWhileTheViewDraws) {
  StartAll();
  ASSERT_TRUE(Eventually(ShowsNoSignal));
  const auto received = [&] {
    auto reports = Reports();
    std::erase_if(reports, [](const JoystickReport& report) { return report.b == 0; });  // centred
    return reports;
  };
  for (std::size_t i = 1; i <= 5000; ++i) {
    Send({.x = static_cast<int>(i % 151), .y = 75, .z = 75, .zr = 75, .b = static_cast<int>(i)});
    if (i % 100 != 0) continue;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // 1000 a second at the most
    ASSERT_TRUE(Eventually([&] { return received().size() == i; }));
  }
  const auto reports = received();
  for (std::size_t i = 1; i <= 5000; ++i) ASSERT_EQ(reports[i - 1].b, static_cast<int>(i));
}

TEST_F(ViewTest, TextStandsInForThePictureWithoutOpenGLOrAModel) {
  StartDriver();
  StartProgram({"env", "LIBGL_DRIVERS_PATH=" + (m_folder / "nowhere").string()});
  EXPECT_TRUE(Eventually(ShowsText));
  EXPECT_THAT(m_process->Errors(), testing::HasSubstr("quillorbit: OpenGL: "));
  EXPECT_TRUE(Listens());
  EndProgram();
  fs::remove(m_folder / "testPlane.x");
  StartProgram();
  EXPECT_TRUE(Eventually(ShowsText));
}

}  // namespace
}  // namespace quillorbit::test
