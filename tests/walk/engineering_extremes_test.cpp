#include "reduce/engineering_extremes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace {

std::vector<double> upTo(int n) {
  std::vector<double> numbers(static_cast<std::size_t>(n));
  std::iota(numbers.begin(), numbers.end(), 1.0);
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(5));
  return numbers;
}

double engineeringMin(std::vector<double> numbers, double percentage) {
  return engineeringExtreme<double>(numbers, percentage, kernels::Order::ascending);
}

double engineeringMax(std::vector<double> numbers, double percentage) {
  return engineeringExtreme<double>(numbers, percentage, kernels::Order::descending);
}

TEST(EngineeringExtremes, PercentageZeroGivesThePlainExtremes) {
  for (const int n : {1, 2, 25, 32, 33, 41, 42, 500}) {
    EXPECT_EQ(engineeringMin(upTo(n), 0.0), 1.0);
    EXPECT_EQ(engineeringMax(upTo(n), 0.0), n);
  }
}

TEST(EngineeringExtremes, TenPercentOfTwentyFiveIsTheSecondSmallestAndSecondLargest) {
  EXPECT_EQ(engineeringCount(25, 10.0), 2);
  EXPECT_EQ(engineeringMin(upTo(25), 10.0), 2.0);
  EXPECT_EQ(engineeringMax(upTo(25), 10.0), 24.0);
}

TEST(EngineeringExtremes, ThreePercentOfTwentyIsNoneSoThePlainExtremesStay) {
  EXPECT_EQ(engineeringCount(20, 3.0), 0);
  EXPECT_EQ(engineeringMin(upTo(20), 3.0), 1.0);
  EXPECT_EQ(engineeringMax(upTo(20), 3.0), 20.0);
}

TEST(EngineeringExtremes, FiftyPercentOfSevenIsTheThirdSmallest) {
  EXPECT_EQ(engineeringCount(7, 50.0), 3);
  EXPECT_EQ(engineeringMin(upTo(7), 50.0), 3.0);
}

TEST(EngineeringExtremes, TwentyFivePercentOfTenIsTheSecondSmallest) { EXPECT_EQ(engineeringMin(upTo(10), 25.0), 2.0); }

TEST(EngineeringExtremes, EqualValuesGiveThatValue) {
  for (const double percentage : {0.0, 10.0, 50.0, 100.0}) {
    EXPECT_EQ(engineeringMin(std::vector<double>(60, 4.5), percentage), 4.5);
    EXPECT_EQ(engineeringMax(std::vector<double>(60, 4.5), percentage), 4.5);
  }
}

TEST(EngineeringExtremes, AllValuesPassedOverGiveTheOppositeExtremeOfSmallArrays) {
  EXPECT_EQ(engineeringMin(upTo(20), 100.0), 20.0);
  EXPECT_EQ(engineeringMax(upTo(20), 100.0), 1.0);
}

TEST(EngineeringExtremes, ACountOutsideOfTheArrayIsBroughtInside) {
  EXPECT_EQ(engineeringCount(10, 250.0), 10);
  EXPECT_EQ(engineeringCount(10, -3.0), 0);
  EXPECT_EQ(engineeringCount(10, std::numeric_limits<double>::infinity()), 10);
  EXPECT_EQ(engineeringCount(10, std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(engineeringCount(0, std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(engineeringCount(2147483647, 1e300), 2147483647);
}

}  // namespace
