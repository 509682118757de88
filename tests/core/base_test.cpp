// Numbers and texts, and the layouts of datagram and report.

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "base/Numbers.h"
#include "intake/MotionData.h"
#include "joystick/JoystickReport.h"

namespace quillorbit {
namespace {

TEST(Numbers, ReadNumberTakesTheNumeralAtTheStart) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::map<double, std::vector<std::string>> expected = {
      {0,
       {"", "true", "-", ".", "e5", "--1", "inf", "\r5", "0x10", "1e-999", "0e999",
        "1e-99999999999999999999", "0." + std::string(400, '0') + "1"}},
      {5000, {"+5000", " 5 0\t0\n0 ", "5E+3"}},
      {0.5, {".5", "5e-1", "0." + std::string(400, '0') + "5e400"}},
      {12, {"12e+x", "12abc", "12.", "12e", "12\r", "12.0.3"}},
      {-1, {"-1"}},
      {-infinity, {"-1e999"}},
      {infinity, {"1e999", "1e99999999999999999999", std::string(400, '9')}}};
  for (const auto& [dNumber, texts] : expected)
    for (const std::string& sText : texts) EXPECT_EQ(ReadNumber(sText), dNumber) << sText;
}

TEST(Numbers, IsNumericWantsTheWholeText) {
  for (const char* sText : {" 5000 ", "+1", "-1", "1e3", "5000.5", ".5", "5."})
    EXPECT_TRUE(IsNumeric(sText)) << sText;
  for (const char* sText : {"", " ", "abc", "5 000", "12abc", "1e", "--1", "+", ".", "1.2.3"})
    EXPECT_FALSE(IsNumeric(sText)) << sText;
}

TEST(Numbers, RoundingTakesHalvesToEvenAndNeverWraps) {
  EXPECT_EQ(RoundToInt32(5000.5), 5000);
  EXPECT_EQ(RoundToInt32(5001.5), 5002);
  EXPECT_EQ(RoundToInt32(2147483647.4), 2147483647);
  EXPECT_THROW((void)RoundToInt32(2147483647.5), std::overflow_error);
  EXPECT_EQ(RoundToInt16(-32768.5), -32768);
  EXPECT_THROW((void)RoundToInt16(32767.5), std::overflow_error);
  EXPECT_THROW((void)RoundToInt16(std::numeric_limits<double>::quiet_NaN()), std::overflow_error);
  EXPECT_EQ(ToInt16(-32768), -32768);
  EXPECT_THROW((void)ToInt16(32768), std::overflow_error);
  EXPECT_THROW((void)ToInt16(-32769), std::overflow_error);
}

TEST(MotionData, FieldsAreLittleEndianInOrder) {
  const std::array<unsigned char, 20> bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0x4B, 0, 0, 0, 0x40, 0x9C, 0,
                                               0,    0,    0,    0,    0x80, 1, 0, 1, 0x80};
  const auto motion = MotionData::FromBytes(std::as_bytes(std::span(bytes)));
  EXPECT_EQ(motion, (MotionData{-1, 75, 40000, std::numeric_limits<std::int32_t>::min(),
                                static_cast<std::int32_t>(0x80010001)}));
  EXPECT_EQ(MotionData::FromBytes(motion.ToBytes()), motion);
  const JoystickReport report{-1, 75, 32767, -32768, motion.b};
  EXPECT_EQ(JoystickReport::FromBytes(report.ToBytes()), report);
}

TEST(MotionData, DisplayAngleUsesTheFactorAsA32BitFloat) {
  EXPECT_EQ(DisplayAngle(0), -90.0F);
  EXPECT_EQ(DisplayAngle(75), 0x1.ep-19F);       // 75 times what 1.2F is too large by
  EXPECT_EQ(DisplayAngle(150), 0x1.680002p+6F);  // 90 + 7.2e-6, to the nearest 32-bit float
}

}  // namespace
}  // namespace quillorbit
