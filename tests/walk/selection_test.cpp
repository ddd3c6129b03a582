#include "reduce/selection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "reduce/engineering_extremes.h"
#include "selection_oracle.h"

namespace {

enum class Shape { random, ties, sorted, reversed, organPipe, equal };
constexpr Shape kShapes[] = {Shape::random,   Shape::ties,      Shape::sorted,
                             Shape::reversed, Shape::organPipe, Shape::equal};

template <class Number>
std::vector<Number> numbersOf(Shape shape, int n, std::mt19937& random) {
  std::vector<Number> numbers(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    Number& number = numbers[static_cast<std::size_t>(i)];
    switch (shape) {
      case Shape::random:
        number = static_cast<Number>(std::uniform_real_distribution<double>(-1e6, 1e6)(random));
        break;
      case Shape::ties:
        number = static_cast<Number>(std::uniform_int_distribution<int>(0, n / 4)(random));
        break;
      case Shape::sorted:
        number = static_cast<Number>(i);
        break;
      case Shape::reversed:
        number = static_cast<Number>(n - i);
        break;
      case Shape::organPipe:
        number = static_cast<Number>(std::min(i, n - i));
        break;
      case Shape::equal:
        number = static_cast<Number>(7);
        break;
    }
  }
  return numbers;
}

template <class Number, class Order>
void expectSelection(const std::vector<Number>& numbers, int k, Order order) {
  std::vector<Number> moved = numbers;
  selectPosition(moved.data(), moved.data() + k, moved.data() + moved.size(), order);
  std::vector<Number> sorted = numbers;
  std::sort(sorted.begin(), sorted.end(), order);
  if (k < static_cast<int>(sorted.size())) {
    const Number target = sorted[static_cast<std::size_t>(k)];
    ASSERT_EQ(moved[static_cast<std::size_t>(k)], target);
    ASSERT_TRUE(std::none_of(moved.begin(), moved.begin() + k, [&](Number x) { return order(target, x); }));
    ASSERT_TRUE(std::none_of(moved.begin() + k, moved.end(), [&](Number x) { return order(x, target); }));
  }
  const std::vector<Number> expected = SelectionOracle<Number>(numbers, order).select(k);
  ASSERT_EQ(moved, expected);
  std::sort(moved.begin(), moved.end(), order);
  ASSERT_EQ(moved, sorted);
}

template <class Number>
class SelectionTest : public testing::Test {};
using Numbers = testing::Types<float, double>;
TYPED_TEST_SUITE(SelectionTest, Numbers);

TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedForEveryLengthShapeOrderAndTarget) {
  std::mt19937 random(20);
  for (int n = 0; n <= 200; ++n) {
    for (const Shape shape : kShapes) {
      const std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
      for (int k = 0; k <= n; ++k) {
        expectSelection(numbers, k, Ascending());
        expectSelection(numbers, k, Descending());
        if (testing::Test::HasFatalFailure()) FAIL() << "n = " << n << ", k = " << k;
      }
    }
  }
}

// Long enough for whole stretches on both sides of a pivot, with equals of the pivot from none to many.
TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedInLongRanges) {
  std::mt19937 random(21);
  for (const int n : {257, 300, 511, 1000, 4096, 20000}) {
    for (const int different : {1, 2, 3, 20, n / 8, n / 2, 50 * n}) {
      std::vector<TypeParam> numbers(static_cast<std::size_t>(n));
      for (auto& number : numbers) {
        number = static_cast<TypeParam>(std::uniform_int_distribution<int>(0, different)(random) - different / 2);
        if (number == 0 && random() % 2 == 0) number = -number;
      }
      for (const int k : {0, 1, n / 100, n / 10, n / 2, n - 2, n}) {
        expectSelection(numbers, k, Ascending());
        expectSelection(numbers, k, Descending());
        if (testing::Test::HasFatalFailure()) FAIL() << "n = " << n << ", " << different << " different, k = " << k;
      }
    }
    for (const Shape shape : kShapes) {
      const std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
      for (const int k : {0, n / 100, n / 3, n}) {
        expectSelection(numbers, k, Ascending());
        expectSelection(numbers, k, Descending());
        if (testing::Test::HasFatalFailure()) FAIL() << "n = " << n << ", k = " << k;
      }
    }
  }
}

TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedWithNaNAmongThem) {
  std::mt19937 random(22);
  for (const int n : {20, 100, 300, 1000, 5000}) {
    std::vector<TypeParam> numbers = numbersOf<TypeParam>(Shape::random, n, random);
    for (int i = 0; i < n; i += 40) numbers[static_cast<std::size_t>(i)] = std::numeric_limits<TypeParam>::quiet_NaN();
    for (const int k : {0, n / 10, n / 2, n}) {
      std::vector<TypeParam> moved = numbers;
      selectPosition(moved.data(), moved.data() + k, moved.data() + n, Ascending());
      const std::vector<TypeParam> expected = SelectionOracle<TypeParam>(numbers, Ascending()).select(k);
      for (std::size_t i = 0; i < moved.size(); ++i) {
        ASSERT_TRUE(moved[i] == expected[i] || (std::isnan(moved[i]) && std::isnan(expected[i]))) << n << ", " << i;
      }
    }
  }
}

TYPED_TEST(SelectionTest, StaysInTheRangeAndKeepsAllValuesWithNaNAmongThem) {
  std::mt19937 random(3);
  for (int n = 1; n <= 150; ++n) {
    std::vector<TypeParam> numbers = numbersOf<TypeParam>(Shape::ties, n, random);
    for (auto& number : numbers) {
      if (std::uniform_int_distribution<int>(0, 3)(random) == 0) number = std::numeric_limits<TypeParam>::quiet_NaN();
    }
    const auto isNaN = [](TypeParam x) { return std::isnan(x); };
    const auto nans = std::count_if(numbers.begin(), numbers.end(), isNaN);
    for (int k = 0; k <= n; k += 1 + n / 7) {
      std::vector<TypeParam> moved = numbers;
      selectPosition(moved.data(), moved.data() + k, moved.data() + n, Ascending());
      EXPECT_EQ(std::count_if(moved.begin(), moved.end(), isNaN), nans);
    }
  }
}

std::vector<double> upTo(int n) {
  std::vector<double> numbers(static_cast<std::size_t>(n));
  std::iota(numbers.begin(), numbers.end(), 1.0);
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(5));
  return numbers;
}

double engineeringMin(std::vector<double> numbers, double percentage) {
  return engineeringExtreme<double>(numbers, percentage, Ascending());
}

double engineeringMax(std::vector<double> numbers, double percentage) {
  return engineeringExtreme<double>(numbers, percentage, Descending());
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
