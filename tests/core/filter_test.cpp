#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include "filter/CFilter.h"

namespace quillorbit {
namespace {

TEST(CFilter, MedianReplacesByRank) {
  CFilter filter;
  const auto median = [&](std::int16_t iSamples, const std::vector<std::int16_t>& samples) {
    filter.Initialise(iSamples);
    std::vector<int> values;
    for (const std::int16_t iSample : samples) {
      filter.Add(iSample);
      values.push_back(filter.Value());
    }
    return values;
  };
  EXPECT_EQ(median(2, {3, 4, 5}), (std::vector{2, 2, 4}));  // 1.5, 2, 4.5 to even
  EXPECT_EQ(median(3, {9, 1, 5}), (std::vector{0, 1, 1}));
  EXPECT_THROW(filter.Initialise(-1), std::length_error);
}

}  // namespace
}  // namespace quillorbit
