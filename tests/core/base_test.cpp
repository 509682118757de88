// Numbers in texts and in datagrams.

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "base/Numbers.h"
#include "intake/MotionData.h"

namespace quillorbit {
namespace {

TEST(Numbers, ReadNumberTakesTheNumeralAtTheStart) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::map<double, std::vector<std::string>> expected = {
      {0, {"", "true", "-", ".", "e5", "--1", "\r5", "0x10", "1e-999"}},
      {5000, {"+5000", " 5 0\t0\n0 ", "5E+3"}},
      {0.5, {".5", "5e-1"}},
      {12, {"12e+x", "12abc", "12.", "12e", "12.0.3"}},
      {infinity, {"1e99999999999999999999", std::string(400, '9')}}};
  for (const auto& [dNumber, texts] : expected)
    for (const std::string& sText : texts) EXPECT_EQ(ReadNumber(sText), dNumber) << sText;
}

TEST(MotionData, FieldsAreLittleEndianInOrder) {
  const std::array<unsigned char, 20> bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0x4B, 0, 0, 0, 0x40, 0x9C, 0,
                                               0,    0,    0,    0,    0x80, 1, 0, 1, 0x80};
  const auto motion = MotionData::FromBytes(std::as_bytes(std::span(bytes)));
  EXPECT_EQ(motion, (MotionData{-1, 75, 40000, std::numeric_limits<std::int32_t>::min(),
                                static_cast<std::int32_t>(0x80010001)}));
}

}  // namespace
}  // namespace quillorbit
