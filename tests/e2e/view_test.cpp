#include <filesystem>
#include <gmock/gmock.h>
#include <thread>

#include "e2e/desktop.h"
#include "e2e/screen.h"

namespace quillorbit::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// A desktop where the model lies beside the program.
struct ViewTest : Desktop {
  static constexpr int nPanelHeight = 40;  // at least; pixels below the view

  ViewTest() {
    for (const char* sFile :
         {"testPlane.x", "phone-back.png", "phone-edges.png", "phone-front.png"})
      fs::copy_file(fs::path(QUILLORBIT_RESOURCES) / sFile, m_folder / sFile);
  }

  /// What part of the view is how coloured. The phone's screen is blue in white light.
  struct Colours {
    double dBlue = 0, dRed = 0, dBlack = 0, dLight = 0;
  };
  static Colours View() {
    Colours colours;
    for (const ScreenWindow& window : WindowsOnScreen()) {
      if (!window.sTitle.starts_with("Quillorbit")) continue;
      const std::string sPixels = Picture(window, 0, window.nHeight - nPanelHeight);
      const double dOne = 4.0 / static_cast<double>(sPixels.size());
      for (std::size_t i = 0; i + 4 <= sPixels.size(); i += 4) {
        const auto part = [&](std::size_t k) { return static_cast<unsigned char>(sPixels[i + k]); };
        const int nBlue = part(0), nGreen = part(1), nRed = part(2);
        if (nBlue > nRed + 30) colours.dBlue += dOne;
        if (nRed > nBlue + 60 && nRed > nGreen + 60) colours.dRed += dOne;
        if (nRed + nGreen + nBlue == 0) colours.dBlack += dOne;
        if (nRed > 200 && nGreen > 200 && nBlue > 200) colours.dLight += dOne;
      }
    }
    return colours;
  }
  static bool ShowsSignal() { return View().dBlue > 0.1 && View().dRed == 0; }
  static bool ShowsNoSignal() { return View().dRed > 0.1 && View().dBlue == 0; }
  static bool ShowsText() { return View().dLight > 0.7; }

  void ExpectTextAndReports(const std::string& sReason,
                            const std::vector<std::string>& through = {}) {
    StartDriver();
    StartProgram(through);
    ASSERT_TRUE(WindowAppears(sMainWindow)) << m_process->Errors();
    EXPECT_TRUE(Eventually(ShowsText));
    EXPECT_THAT(m_process->Errors(), HasSubstr("quillorbit: " + sReason));
    EXPECT_TRUE(Eventually([&] {
      Send({.x = 0, .y = 0, .z = 42, .zr = 0, .b = 0});
      return !Reports().empty() && Reports().back().z == 42;
    }));
    EndProgram();
    m_driver.reset();
    fs::remove(m_folder / "vJoyQuillorbit");
  }
};

TEST_F(ViewTest, PhoneIsWhiteWithASignalRedWithoutAndComesBackAsItWas) {
  StartAll();
  ASSERT_TRUE(Eventually(ShowsNoSignal));
  EXPECT_GT(View().dBlack, 0.4);
  const auto send = [&] { Send({.x = 75, .y = 75, .z = 75, .zr = 75, .b = 0}); };
  EXPECT_TRUE(Eventually([&] {
    send();
    return ShowsSignal();
  }));
  EXPECT_TRUE(Eventually(ShowsNoSignal));

  Minimise();
  ASSERT_TRUE(Eventually([] { return !HasWindow("Quillorbit"); }));
  ChildProcess second(m_folder, m_program, {});  // brings the first to the front
  EXPECT_EQ(second.Wait(), 0);
  EXPECT_TRUE(Eventually(ShowsNoSignal));
  EndProgram();
}

TEST_F(ViewTest, BurstsAreReportedWholeAndInOrderWhileTheViewDraws) {
  StartAll();
  ASSERT_TRUE(Eventually(ShowsNoSignal));
  const std::size_t nBefore = Reports().size();
  constexpr int nBursts = 10, nEach = 100;
  for (int i = 0; i < nBursts * nEach; ++i) {
    Send({.x = i % 151, .y = 75, .z = 75, .zr = 75, .b = i + 1});
    if (i % nEach == nEach - 1) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ASSERT_TRUE(Eventually([&] { return Reports().size() >= nBefore + nBursts * nEach; }));
  const auto reports = Reports();
  for (int i = 0; i < nBursts * nEach; ++i)
    ASSERT_EQ(reports[nBefore + static_cast<std::size_t>(i)].b, i + 1);
  EndProgram();
}

TEST_F(ViewTest, WhateverIsMissingOrBrokenTheValuesAreShownAsText) {
  {
    SCOPED_TRACE("no driver");
    ExpectTextAndReports("OpenGL: ",
                         {"env", "LIBGL_DRIVERS_PATH=" + (m_folder / "nowhere").string()});
  }
  const auto withFile = [&](const char* sFile, const std::string& sContent) {
    SCOPED_TRACE(std::string(sFile) + (sContent.empty() ? " missing" : " broken"));
    const fs::path file = m_folder / sFile;
    fs::remove(file);
    if (!sContent.empty()) WriteTo(file, sContent);
    ExpectTextAndReports(file.string() + ": ");
    fs::remove(file);
    fs::copy_file(fs::path(QUILLORBIT_RESOURCES) / sFile, file);
  };
  const std::string sModel = ReadFile(m_folder / "testPlane.x");
  withFile("testPlane.x", "");
  withFile("testPlane.x", sModel.substr(0, sModel.size() / 2));
  withFile("phone-back.png", "");
  withFile("phone-back.png", ReadFile(m_folder / "phone-back.png").substr(0, 500));
}

}  // namespace
}  // namespace quillorbit::test
