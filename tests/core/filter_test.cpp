#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include "filter/CFilter.h"

namespace quillorbit {
namespace {

/// The outputs while samples are fed by `add`.
std::vector<int> Feed(CFilter& filter, void (CFilter::*add)(std::int16_t),
                      const std::vector<int>& samples) {
  std::vector<int> values;
  for (const int sample : samples) {
    (filter.*add)(static_cast<std::int16_t>(sample));
    values.push_back(filter.Value());
  }
  return values;
}

std::vector<int> LowPass(CFilter& filter, const std::vector<int>& samples) {
  return Feed(filter, &CFilter::AddLowPass, samples);
}

TEST(CFilter, LowPassWeighsTheSampleAndRoundsEachOperation) {
  struct Case {
    double dFreq;
    std::vector<int> samples, values;
  };
  for (const Case& c : {
           Case{30, {150, 150, 150, -32768, 32767}, {75, 112, 131, -16318, 8224}},  // 112.5, 8224.5
           Case{1, {150}, {5}},                                                     // 150/31 = 4.84
           // a factor just above 1/6: in a wider format 15/6 would be 2.5, which gives 2
           Case{6, {15}, {3}},
           // with multiplication and addition fused 27
           Case{6, {30, 134}, {5, 26}},
       }) {
    CFilter filter;
    filter.InitialiseLowPass(30, c.dFreq);
    EXPECT_EQ(LowPass(filter, c.samples), c.values);
  }
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
  filter.Initialise(1);
  filter.Add(7);
  EXPECT_THROW(filter.InitialiseLowPass(0, 30), std::domain_error);
  EXPECT_EQ(filter.Value(), 7);  // still in median mode
  EXPECT_THROW(filter.InitialiseLowPass(30, 0), std::domain_error);
  EXPECT_EQ(LowPass(filter, {100}), (std::vector{0}));  // low-pass mode, factor still 0

  filter.InitialiseLowPass(30, 30);
  filter.AddLowPass(100);
  EXPECT_THROW(filter.InitialiseLowPass(30, -30), std::domain_error);
  for (const std::int16_t sample : {std::int16_t{0}, std::int16_t{100}}) {
    EXPECT_THROW(filter.AddLowPass(sample), std::overflow_error);
    EXPECT_EQ(filter.Value(), 50);
  }
  filter.InitialiseLowPass(30, -15);  // factor -1: the output is 2 * previous - sample
  EXPECT_EQ(LowPass(filter, {-30000}), (std::vector{30100}));
  EXPECT_THROW(filter.AddLowPass(-20000), std::overflow_error);
  EXPECT_EQ(filter.Value(), 30100);
}

TEST(CFilter, MedianReplacesByRank) {
  CFilter filter;
  const auto median = [&](std::int16_t iSamples, const std::vector<int>& samples) {
    filter.Initialise(iSamples);
    EXPECT_EQ(filter.Samples(), iSamples);
    return Feed(filter, &CFilter::Add, samples);
  };
  EXPECT_EQ(Feed(filter, &CFilter::Add, {9}), (std::vector{0}));  // a new one has no buffer
  EXPECT_EQ(median(1, {7, -3}), (std::vector{7, -3}));
  EXPECT_EQ(median(2, {3, 4, 5}), (std::vector{2, 2, 4}));  // 1.5, 2, 4.5 to even
  EXPECT_EQ(median(3, {9, 1, 5}), (std::vector{0, 1, 1}));
  EXPECT_THROW(filter.Initialise(-1), std::length_error);
  EXPECT_EQ(filter.Value(), 1);
  EXPECT_EQ(median(0, {9}), (std::vector{0}));
  EXPECT_THROW(median(2, {32767, 32767, 1}), std::overflow_error);
}

}  // namespace
}  // namespace quillorbit
