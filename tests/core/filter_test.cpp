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

TEST(CFilter, LowPassWeighsTheSampleAndRoundsEachOperation) {
  struct Case {
    double dFreq;
    std::vector<int> samples, values;
  };
  for (const Case& c : {
           Case{30, {150, 150, 150, -32768, 32767}, {75, 112, 131, -16318, 8224}},  // 112.5, 8224.5
           // a factor just above 1/6: in a wider format 15/6 would be 2.5, which gives 2
           Case{6, {15}, {3}},
           // with multiplication and addition fused 27
           Case{6, {30, 134}, {5, 26}},
       }) {
    CFilter filter;
    filter.InitialiseLowPass(30, c.dFreq);
    EXPECT_EQ(Feed(filter, &CFilter::AddLowPass, c.samples), c.values);
  }
  EXPECT_THROW(CFilter().InitialiseLowPass(30, 0), std::domain_error);
}

TEST(CFilter, MedianReplacesByRank) {
  CFilter filter;
  const auto median = [&](std::int16_t iSamples, const std::vector<int>& samples) {
    filter.Initialise(iSamples);
    return Feed(filter, &CFilter::Add, samples);
  };
  EXPECT_EQ(median(2, {3, 4, 5}), (std::vector{2, 2, 4}));  // 1.5, 2, 4.5 to even
  EXPECT_EQ(median(3, {9, 1, 5}), (std::vector{0, 1, 1}));
  EXPECT_THROW(filter.Initialise(-1), std::length_error);
}

}  // namespace
}  // namespace quillorbit
