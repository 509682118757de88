#include "base/Numbers.h"

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>

#include "base/ShortText.h"
#include "fakes/device.h"
#include "intake/MotionData.h"
#include "joystick/CGamePad.h"
#include "joystick/JoystickReport.h"

namespace quillorbit {
namespace {

TEST(Numbers, ReadNumberTakesTheNumeralAtTheStart) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::map<std::string, double> expected = {
      {"5000", 5000},
      {"+5000", 5000},
      {" 5 0\t0\n0 ", 5000},
      {"-1", -1},
      {"5000.5", 5000.5},
      {".5", 0.5},
      {"5.", 5},
      {"1e3", 1000},
      {"1E+3", 1000},
      {"1e-3", 0.001},
      {"1e", 1},
      {"12e+x", 12},
      {"12abc", 12},
      {"1.2.3", 1.2},
      {"", 0},
      {"abc", 0},
      {"true", 0},
      {"False", 0},
      {"-", 0},
      {".", 0},
      {"e5", 0},
      {"--1", 0},
      {"inf", 0},
      {"nan", 0},
      {"0x10", 0},
      {"1e999", infinity},
      {"-1e999", -infinity},
      {"1e-999", 0},
      {"0e999", 0},
      {"1e99999999999999999999", infinity},
      {"0.0e99999999999999999999", 0},
      {"1e-99999999999999999999", 0},
      {"5\r", 5},
      {"\r5", 0},
      {"5000\xC2\xA0", 5000},
  };
  for (const auto& [sText, dNumber] : expected) EXPECT_EQ(ReadNumber(sText), dNumber) << sText;
  EXPECT_EQ(ReadNumber(std::string(400, '9')), infinity);
  EXPECT_EQ(ReadNumber("0." + std::string(400, '0') + "1"), 0);
  EXPECT_EQ(ReadNumber("0." + std::string(400, '0') + "1e401"), 1);
}

TEST(Numbers, IsNumericWantsTheWholeText) {
  for (const char* sText : {"5000", " 5000 ", "+1", "-1", "1e3", "5000.5", ".5", "5."})
    EXPECT_TRUE(IsNumeric(sText)) << sText;
  for (const char* sText :
       {"", " ", "abc", "5 000", "12abc", "1e", "--1", "+", ".", "1.2.3", "0x10"})
    EXPECT_FALSE(IsNumeric(sText)) << sText;
}

TEST(Numbers, RoundingTakesHalvesToEvenAndNeverWraps) {
  EXPECT_EQ(RoundToInt32(5000.5), 5000);
  EXPECT_EQ(RoundToInt32(5001.5), 5002);
  EXPECT_EQ(RoundToInt32(-0.5), 0);
  EXPECT_EQ(RoundToInt32(2147483647.4), 2147483647);
  EXPECT_THROW((void)RoundToInt32(2147483647.5), std::overflow_error);
  EXPECT_EQ(RoundToInt16(-32768.5), -32768);
  EXPECT_THROW((void)RoundToInt16(32767.5), std::overflow_error);
  EXPECT_THROW((void)RoundToInt16(std::numeric_limits<double>::quiet_NaN()), std::overflow_error);
  EXPECT_EQ(ToInt16(-32768), -32768);
  EXPECT_THROW((void)ToInt16(32768), std::overflow_error);
  EXPECT_THROW((void)ToInt16(-32769), std::overflow_error);
}

TEST(ShortText, HoldsTheLongestReadout) {
  constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
  const ShortText text = ShortText() << least << " (" << least << "/s)";
  EXPECT_EQ(std::string_view(text), "-2147483648 (-2147483648/s)");
  const ShortText cut = ShortText() << std::string(47, 'a') << "bc";
  EXPECT_EQ(std::string_view(cut), std::string(47, 'a') + "b");
}

TEST(MotionData, FieldsAreLittleEndianInOrder) {
  const std::array<unsigned char, 20> bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0x4B, 0, 0, 0, 0x40, 0x9C, 0,
                                               0,    0,    0,    0,    0x80, 1, 0, 1, 0x80};
  const auto motion = MotionData::FromBytes(std::as_bytes(std::span(bytes)));
  EXPECT_EQ(motion.x, -1);
  EXPECT_EQ(motion.y, 75);
  EXPECT_EQ(motion.z, 40000);
  EXPECT_EQ(motion.zr, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(static_cast<std::uint32_t>(motion.b), 0x80010001);
  EXPECT_EQ(MotionData::FromBytes(motion.ToBytes()), motion);
}

TEST(MotionData, DisplayAngleUsesTheFactorAsA32BitFloat) {
  EXPECT_EQ(DisplayAngle(0), -90.0F);
  EXPECT_EQ(DisplayAngle(75), 0x1.ep-19F);       // 75 times what 1.2F is too large by
  EXPECT_EQ(DisplayAngle(150), 0x1.680002p+6F);  // 90 + 7.2e-6, to the nearest 32-bit float
}

TEST(JoystickReport, ReadsWhatItWrites) {
  const JoystickReport report{-1, 75, 32767, -32768, std::numeric_limits<std::int32_t>::min()};
  EXPECT_EQ(JoystickReport::FromBytes(report.ToBytes()), report);
}

TEST(CGamePad, WithoutADeviceItTakesAnythingAndWritesNothing) {
  fakes::CallLog log;
  fakes::FakeDevice device(log);
  device.bPresent = false;
  {
    CGamePad gamePad(device);
    EXPECT_FALSE(gamePad.IsOpen());
    gamePad.SendData(40000, 0, 0, 0, 0);
  }
  EXPECT_EQ(log.Calls().size(), 1U);  // the search; nothing is written or closed
}

}  // namespace
}  // namespace quillorbit
