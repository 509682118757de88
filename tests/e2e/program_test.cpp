#include <csignal>
#include <gmock/gmock.h>
#include <random>

#include <sys/socket.h>

#include "e2e/desktop.h"

namespace quillorbit::test {
namespace {

constexpr JoystickReport centred{75, 75, 75, 75, 0};

struct ProgramTest : Desktop {};

TEST_F(ProgramTest, DatagramsReachTheDriverAndALostSignalCentresTheStick) {
  StartAll();
  const std::size_t nBefore = Reports().size();  // a slow start has lost the signal already
  Send({.x = 150, .y = -150, .z = 75, .zr = 149, .b = -2147483647});
  Send({.x = 150, .y = -150, .z = 75, .zr = 149, .b = -2147483647});
  ASSERT_TRUE(Eventually([&] { return Reports().size() >= nBefore + 3; }));
  auto reports = Reports();
  reports.erase(reports.begin(), reports.begin() + static_cast<long>(nBefore));
  EXPECT_THAT(reports,
              testing::ElementsAre(JoystickReport{75, -75, 75, 149, -2147483647},
                                   JoystickReport{112, -112, 75, 149, -2147483647}, centred));
  EXPECT_TRUE(WindowAppears("^Quillorbit - No signal$"));
  Send({.x = 75, .y = 75, .z = 75, .zr = 75, .b = 0});
  EXPECT_TRUE(WindowAppears("^Quillorbit$"));
  EndProgram();
  EXPECT_TRUE(m_driver->IsRunning());
}

TEST_F(ProgramTest, DatagramsThatAreNoneAndRandomOnesDoNoHarm) {
  StartAll();
  ASSERT_TRUE(Eventually([&] { return !Reports().empty(); }));  // the signal is lost
  const std::size_t nBefore = Reports().size();
  const std::vector<std::byte> bytes(65507);
  for (const std::size_t nSize : {0U, 1U, 19U, 21U, 65507U})
    Send(m_nPort, std::span(bytes).first(nSize));
  Send({.x = 0, .y = 0, .z = 1, .zr = 2, .b = 3});
  ASSERT_TRUE(Eventually([&] { return Reports().size() > nBefore; }));
  EXPECT_EQ(Reports()[nBefore], (JoystickReport{0, 0, 1, 2, 3}));  // nothing came of the others

  std::mt19937 random(1);
  std::array<std::uint32_t, 8> words{};
  for (int i = 0; i < 20000; ++i) {
    for (auto& word : words) word = static_cast<std::uint32_t>(random());
    Send(m_nPort, std::as_bytes(std::span(words)).first(i % 2 == 0 ? 20 : random() % 33));
  }
  ASSERT_TRUE(Eventually([&] {
    Send({.x = 0, .y = 0, .z = 7, .zr = 7, .b = 7});
    return Reports().back().z == 7;
  }));
  EndProgram();
}

TEST_F(ProgramTest, WithoutADriverItSaysSoAndEnds) {
  StartProgram();
  Answer("^Virtual Joystick Error$", "Return");
  EXPECT_EQ(m_process->Wait(), 0);
  EXPECT_THAT(m_process->Errors(), testing::HasSubstr("uinput"));
  EXPECT_THAT(m_process->Errors(), testing::HasSubstr("vJoyQuillorbit"));
}

TEST_F(ProgramTest, DriverInUseIsNoDriver) {
  StartAll();
  const auto other = m_folder / "other";
  std::filesystem::copy_file(m_program, other);  // another program file: no second copy of this one
  ChildProcess second(m_folder, other, {});
  Answer("^Virtual Joystick Error$", "Return");
  EXPECT_EQ(second.Wait(), 0);
  EndProgram();
}

/// The box has the title that the main window has while there is a signal.
struct CloseTest : ProgramTest {
  void StartAndClose() {
    StartAll();
    ASSERT_TRUE(WindowAppears("^Quillorbit - No signal$"));
    AskToClose();
  }
  /// Whether datagrams still drive the joystick though no window is there.
  void ExpectHiddenAndAlive() {
    ASSERT_TRUE(Eventually([] { return !HasWindow("Quillorbit"); }));
    const std::size_t nBefore = Reports().size();
    Send({.z = 42});
    ASSERT_TRUE(Eventually([&] { return Reports().size() > nBefore; }));
    EXPECT_EQ(Reports()[nBefore].z, 42);
    EXPECT_FALSE(HasWindow("Quillorbit"));
  }
};

TEST_F(CloseTest, NoHides) {
  StartAndClose();
  Answer("^Quillorbit$", "Right Return");  // from Yes to No
  ExpectHiddenAndAlive();
  EndProgram();
}

TEST_F(CloseTest, EscapeIsNo) {
  StartAndClose();
  Answer("^Quillorbit$", "Escape");
  ExpectHiddenAndAlive();
  EndProgram();
}

TEST_F(CloseTest, YesEnds) {
  StartAndClose();
  Answer("^Quillorbit$", "Return");
  EXPECT_EQ(m_process->Wait(), 0);
}

TEST_F(CloseTest, MinimisingHides) {
  StartAll();
  Minimise();
  ExpectHiddenAndAlive();
  EndProgram();
}

}  // namespace
}  // namespace quillorbit::test
