// The selection of every version, against the one that the tests write a second time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kernels/kernels.h"
#include "support/selection_oracle.h"
#include "versions.h"

namespace {

using kernels::Kernels;
using kernels::Order;

enum class Shape { random, ties, eighths, sorted, reversed, organPipe, equal, zeros, halfEqual };
constexpr Shape kShapes[] = {Shape::random,    Shape::ties,  Shape::eighths, Shape::sorted,   Shape::reversed,
                             Shape::organPipe, Shape::equal, Shape::zeros,   Shape::halfEqual};

template <class Number>
Number numberOf(Shape shape, int i, int n, std::mt19937& random) {
  const auto upTo = [&](int most) { return static_cast<Number>(std::uniform_int_distribution<int>(0, most)(random)); };
  const auto anything = [&] { return static_cast<Number>(std::uniform_real_distribution<double>(-1e6, 1e6)(random)); };
  switch (shape) {
    case Shape::random:
      return anything();
    case Shape::ties:
      return upTo(n / 4);
    case Shape::eighths:
      return static_cast<Number>((static_cast<long long>(upTo(n / 8)) * 3727) % (n / 8 + 1));
    case Shape::sorted:
      return static_cast<Number>(i);
    case Shape::reversed:
      return static_cast<Number>(n - i);
    case Shape::organPipe:
      return static_cast<Number>(std::min(i, n - i));
    case Shape::equal:
      return Number{7};
    case Shape::zeros:
      // Equal, but not the same.
      return std::vector<Number>{Number{0}, Number{-0.0}, Number{1}, Number{-1}, anything()}[random() % 5];
    default:
      return random() % 2 == 0 ? Number{0} : anything();
  }
}

template <class Number>
std::vector<Number> numbersOf(Shape shape, int n, std::mt19937& random) {
  std::vector<Number> numbers;
  for (int i = 0; i < n; ++i) numbers.push_back(numberOf<Number>(shape, i, n, random));
  return numbers;
}

void select(const Kernels& version, std::vector<float>& numbers, int k, Order order) {
  version.selectFloat(numbers.data(), numbers.size(), static_cast<std::size_t>(k), order);
}
void select(const Kernels& version, std::vector<double>& numbers, int k, Order order) {
  version.selectDouble(numbers.data(), numbers.size(), static_cast<std::size_t>(k), order);
}

// Every number must stand where it does after the movements described, with its bits.
template <class Number>
void expectSelection(const std::vector<Number>& numbers, int k, Order order) {
  const std::vector<Number> expected =
      order == Order::ascending ? selectedAscending(numbers, k) : selectedDescending(numbers, k);
  for (const Kernels* const version : testedVersions()) {
    std::vector<Number> moved = numbers;
    select(*version, moved, k, order);
    ASSERT_TRUE(moved.empty() || std::memcmp(moved.data(), expected.data(), moved.size() * sizeof(Number)) == 0)
        << version->name << ", " << numbers.size() << " numbers, k = " << k
        << (order == Order::ascending ? ", ascending" : ", descending");
  }
}

template <class Number>
void expectBothSelections(const std::vector<Number>& numbers, int k) {
  ASSERT_NO_FATAL_FAILURE(expectSelection(numbers, k, Order::ascending));
  ASSERT_NO_FATAL_FAILURE(expectSelection(numbers, k, Order::descending));
}

template <class Number>
class SelectionTest : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(SelectionTest, Precisions);

TYPED_TEST(SelectionTest, PutsTheTargetWhereAFullSortWould) {
  std::mt19937 random(19);
  for (const Shape shape : kShapes) {
    for (const int n : {1, 32, 33, 500, 5000}) {
      std::vector<TypeParam> sorted = numbersOf<TypeParam>(shape, n, random);
      for (const Kernels* const version : testedVersions()) {
        std::vector<TypeParam> moved = sorted;
        std::shuffle(moved.begin(), moved.end(), random);
        const int k = n / 3;
        select(*version, moved, k, Order::ascending);
        std::sort(sorted.begin(), sorted.end());
        const TypeParam target = sorted[static_cast<std::size_t>(k)];
        EXPECT_EQ(moved[static_cast<std::size_t>(k)], target) << version->name;
        EXPECT_TRUE(std::all_of(moved.begin(), moved.begin() + k, [=](TypeParam x) { return x <= target; }));
        EXPECT_TRUE(std::all_of(moved.begin() + k, moved.end(), [=](TypeParam x) { return x >= target; }));
        std::sort(moved.begin(), moved.end());
        EXPECT_EQ(moved, sorted) << version->name;
      }
    }
  }
}

TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedForEveryShortLengthShapeAndTarget) {
  std::mt19937 random(20);
  for (int n = 0; n <= 120; ++n) {
    for (const Shape shape : kShapes) {
      const std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
      for (int k = 0; k <= n; k += 1 + n / 40) ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, k));
    }
  }
}

// From the first length at which both sides of a pivot have a whole stretch, and of one or two stretches more.
TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedAroundWholeStretches) {
  std::mt19937 random(21);
  for (const int middle : {64, 128, 160, 256, 288, 384, 512, 1024}) {
    for (int n = middle - 3; n <= middle + 3; ++n) {
      for (const Shape shape : kShapes) {
        const std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
        for (const int k : {0, n / 100, n / 10, n / 2, n}) {
          ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, k)) << "shape " << static_cast<int>(shape);
        }
      }
    }
  }
}

// With equals of the pivot from none to many.
TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedInLongRanges) {
  std::mt19937 random(22);
  for (const int n : {1000, 4096, 30000}) {
    for (const Shape shape : kShapes) {
      const std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
      for (const int k : {0, n / 100, n / 10, n / 2, n - 2, n}) {
        ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, k)) << "shape " << static_cast<int>(shape);
      }
    }
    for (const int different : {1, 2, 3, 20, 100, n / 50}) {
      std::vector<TypeParam> numbers(static_cast<std::size_t>(n));
      for (auto& number : numbers) {
        number = static_cast<TypeParam>(std::uniform_int_distribution<int>(0, different)(random) - different / 2);
        if (number == 0 && random() % 2 == 0) number = -number;
      }
      for (const int k : {0, n / 10, n / 2}) ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, k));
    }
  }
}

// Numbers whose partition soon has only one scan left to do. The pivot stands in the middle, in a run of equivalents:
// zeros of both signs, and NaN where asked for. All below it are on their side; of those above, after the first
// `clear`, `misplaced` in a hundred are not.
template <class Number>
std::vector<Number> oneSided(int n, int run, int clear, int misplaced, bool withNan, std::mt19937& random) {
  constexpr Number kNan = std::numeric_limits<Number>::quiet_NaN();
  std::uniform_real_distribution<double> size(1, 1e6);
  std::vector<Number> numbers;
  const int middle = n / 2;
  for (int i = 0; i < n; ++i) {
    const bool isBelow = i < middle - run / 2;
    const bool isEqual = !isBelow && i <= middle + run / 2;
    const bool isMisplaced = i > middle + run / 2 + clear && static_cast<int>(random() % 100) < misplaced;
    const Number zero = withNan && random() % 3 == 0 ? kNan : Number(random() % 2 == 0 ? 0.0 : -0.0);
    const auto number = static_cast<Number>(isBelow || isMisplaced ? -size(random) : size(random));
    numbers.push_back(isEqual ? zero : number);
  }
  // The places that the medians look at.
  for (int i = 0; i < 3; ++i) numbers[static_cast<std::size_t>(n / 8 * i)] = Number{-2};
  for (int i = 0; i < 3; ++i) numbers[static_cast<std::size_t>(n - 1 - n / 8 * i)] = Number{2};
  numbers[static_cast<std::size_t>(middle - n / 8)] = Number{-2};
  numbers[static_cast<std::size_t>(middle + n / 8)] = Number{2};
  return numbers;
}

TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedWhereOneScanGoesOnAlone) {
  std::mt19937 random(23);
  for (int round = 0; round < 4000; ++round) {
    const int n = 600 + static_cast<int>(random() % 1500);
    const int run = static_cast<int>(round % 4 == 0 ? random() % 140 : random() % 6);
    const int clear = static_cast<int>(random() % 30);
    const int misplaced = std::vector<int>{3, 10, 50, 97}[random() % 4];
    std::vector<TypeParam> numbers = oneSided<TypeParam>(n, run, clear, misplaced, round % 3 == 0, random);
    if (random() % 2 == 0) {
      std::reverse(numbers.begin(), numbers.end());
      for (auto& number : numbers) number = -number;
    }
    ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, static_cast<int>(random() % 2) * n / 3)) << "round " << round;
  }
}

// With NaN among them there is no order, but the movements are described all the same.
TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedWithNaNAmongThem) {
  constexpr TypeParam kNan = std::numeric_limits<TypeParam>::quiet_NaN();
  std::mt19937 random(24);
  for (const int n : {20, 40, 150, 300, 1000, 5000}) {
    for (const Shape shape : kShapes) {
      for (const int every : {1, 2, 3, 40, 500, 4000}) {
        std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
        for (auto& number : numbers) {
          if (random() % static_cast<unsigned>(every) == 0) number = kNan;
        }
        for (const int k : {0, n / 10, n / 2, n}) ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, k));
      }
    }
  }
}

TYPED_TEST(SelectionTest, MovesEveryValueAsDescribedInRangesOfAllKinds) {
  using Limits = std::numeric_limits<TypeParam>;
  std::mt19937 random(25);
  for (int round = 0; round < 1500; ++round) {
    const int n = 33 + static_cast<int>(random() % 2500);
    const Shape shape = kShapes[random() % std::size(kShapes)];
    std::vector<TypeParam> numbers = numbersOf<TypeParam>(shape, n, random);
    const auto rare = 1 + random() % 3000;
    for (auto& number : numbers) {
      if (random() % rare == 0) {
        number = std::vector<TypeParam>{Limits::infinity(),   -Limits::infinity(), Limits::quiet_NaN(), Limits::max(),
                                        Limits::denorm_min(), Limits::lowest(),    TypeParam{-0.0}}[random() % 7];
      }
    }
    const int k = static_cast<int>(random() % static_cast<unsigned>(n + 1));
    ASSERT_NO_FATAL_FAILURE(expectBothSelections(numbers, k)) << "round " << round;
  }
}

}  // namespace
