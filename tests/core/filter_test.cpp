#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include "filter/CFilter.h"

namespace quillorbit {
namespace {

std::vector<int> LowPass(CFilter& filter, std::initializer_list<std::int16_t> samples) {
  std::vector<int> values;
  for (const std::int16_t sample : samples) {
    filter.AddLowPass(sample);
    values.push_back(filter.Value());
  }
  return values;
}

std::vector<int> Median(CFilter& filter, std::initializer_list<std::int16_t> samples) {
  std::vector<int> values;
  for (const std::int16_t sample : samples) {
    filter.Add(sample);
    values.push_back(filter.Value());
  }
  return values;
}

TEST(CFilter, NewOnePutsOutNothing) {
  CFilter filter;
  filter.Add(9);
  EXPECT_EQ(filter.Value(), 0);
  EXPECT_EQ(filter.Samples(), 0);
}

TEST(CFilter, LowPassWeighsTheSampleAndRoundsHalvesToEven) {
  CFilter half;
  half.InitialiseLowPass(30, 30);
  EXPECT_EQ(LowPass(half, {150, 150, 150, -32768, 32767}),
            (std::vector{75, 112, 131, -16318, 8224}));  // 112.5, 131, -16318.5, 8224.5

  CFilter heavy;
  heavy.InitialiseLowPass(30, 1);
  EXPECT_EQ(LowPass(heavy, {150}), (std::vector{5}));  // 150/31 = 4.84
}

TEST(CFilter, LowPassRoundsEachOperationTo64Bits) {
  CFilter once, twice;
  once.InitialiseLowPass(30, 6);  // a factor just above 1/6
  EXPECT_EQ(LowPass(once, {15}), (std::vector{3}));  // with a wider factor exactly 2.5, which is 2
  twice.InitialiseLowPass(30, 6);
  EXPECT_EQ(LowPass(twice, {30, 134}), (std::vector{5, 26}));  // with a fused operation 27
}

TEST(CFilter, LowPassKeepsItsOutputWhenTunedAnew) {
  CFilter filter;
  filter.InitialiseLowPass(30, 30);
  filter.AddLowPass(150);
  filter.InitialiseLowPass(30, 10);
  EXPECT_EQ(filter.Value(), 75);
  EXPECT_EQ(LowPass(filter, {75, 95}), (std::vector{75, 80}));  // a quarter of 20 on top
}

TEST(CFilter, DivisionByZeroLeavesWhatItCan) {
  CFilter filter;
  EXPECT_THROW(filter.InitialiseLowPass(0, 30), std::domain_error);
  filter.Initialise(1);
  filter.Add(7);
  EXPECT_EQ(filter.Value(), 7);  // still in median mode

  EXPECT_THROW(filter.InitialiseLowPass(30, 0), std::domain_error);
  EXPECT_EQ(LowPass(filter, {100}), (std::vector{0}));  // low-pass mode, factor still 0

  filter.InitialiseLowPass(30, 30);
  filter.AddLowPass(100);
  EXPECT_THROW(filter.InitialiseLowPass(30, -30), std::domain_error);
  for (const int sample : {0, 50, 100}) {
    EXPECT_THROW(filter.AddLowPass(static_cast<std::int16_t>(sample)), std::overflow_error);
    EXPECT_EQ(filter.Value(), 50);
  }
  filter.InitialiseLowPass(30, 30);
  EXPECT_EQ(LowPass(filter, {100}), (std::vector{75}));
}

TEST(CFilter, OverflowKeepsTheOutput) {
  CFilter filter;
  filter.InitialiseLowPass(30, -15);  // factor -1: the output is 2 * previous - sample
  EXPECT_EQ(LowPass(filter, {-20000}), (std::vector{20000}));
  EXPECT_THROW(filter.AddLowPass(-20000), std::overflow_error);
  EXPECT_EQ(filter.Value(), 20000);
}

TEST(CFilter, MedianReplacesByRank) {
  CFilter one;
  one.Initialise(1);
  EXPECT_EQ(Median(one, {7, -3}), (std::vector{7, -3}));

  CFilter two;
  two.Initialise(2);
  EXPECT_EQ(Median(two, {3, 4, 5}), (std::vector{2, 2, 4}));  // 1.5, 2, 4.5 to even

  CFilter three;
  three.Initialise(3);
  EXPECT_EQ(three.Samples(), 3);
  EXPECT_EQ(Median(three, {9, 1, 5}), (std::vector{0, 1, 1}));
}

TEST(CFilter, MedianOfTwoLargeOnesOverflows) {
  CFilter filter;
  filter.Initialise(2);
  for (const int sample : {32767, 32767, 1}) filter.Add(static_cast<std::int16_t>(sample));
  EXPECT_THROW((void)filter.Value(), std::overflow_error);
}

TEST(CFilter, InitialiseChecksAndChangesModes) {
  CFilter filter;
  filter.Initialise(1);
  filter.Add(7);
  EXPECT_THROW(filter.Initialise(-1), std::length_error);
  EXPECT_EQ(filter.Value(), 7);
  EXPECT_EQ(filter.Samples(), 1);
  filter.InitialiseLowPass(30, 30);
  EXPECT_EQ(filter.Value(), 0);
  filter.Initialise(0);
  filter.Add(9);
  EXPECT_EQ(filter.Value(), 0);
}

}  // namespace
}  // namespace quillorbit
