// Every version of the kernels that this machine can run, against the plain loops that their contract states.
#include "kernels/kernels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "versions.h"

namespace {

using kernels::Kernels;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// What the numbers of a test are like; each kind stresses another way in which a shortcut could go wrong.
enum class Numbers { usual, ties, special, tiny, huge, equal, zeros, bits };
constexpr Numbers kAllNumbers[] = {Numbers::usual, Numbers::ties,  Numbers::special, Numbers::tiny,
                                   Numbers::huge,  Numbers::equal, Numbers::zeros,   Numbers::bits};

template <class Number>
Number draw(Numbers kind, std::mt19937& random) {
  std::normal_distribution<Number> usual(0, 100);
  const auto pick = [&](std::initializer_list<Number> from) { return from.begin()[random() % from.size()]; };
  using Limits = std::numeric_limits<Number>;
  switch (kind) {
    case Numbers::usual:
      return usual(random);
    case Numbers::ties:
      return static_cast<Number>(static_cast<int>(random() % 5) - 2);
    case Numbers::special:
      return random() % 4 != 0 ? usual(random)
                               : pick({Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), Number{0},
                                       Number{-0.0}, Limits::max(), Limits::lowest()});
    case Numbers::tiny:
      return usual(random) * Limits::min() * pick({Number{1}, Number(1e-3), Number(1e6), Number{0}});
    case Numbers::huge:
      return usual(random) * pick({Limits::max() / 1000, Number(1e16), Number(1e19)});
    case Numbers::equal:
      return Number{7};
    case Numbers::zeros:
      return pick({Number{0}, Number{-0.0}, Number{-1}});
    default:
      break;
  }
  if constexpr (sizeof(Number) == 4) {
    return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
  } else {
    return std::bit_cast<double>((static_cast<std::uint64_t>(random()) << 32U) | random());
  }
}

template <class Number>
std::vector<Number> drawMany(Numbers kind, std::size_t count, std::mt19937& random) {
  std::vector<Number> numbers(count);
  for (Number& number : numbers) number = draw<Number>(kind, random);
  return numbers;
}

template <class Number>
auto bitsOf(Number number) {
  if constexpr (sizeof(Number) == 4) {
    return std::bit_cast<std::uint32_t>(number);
  } else {
    return std::bit_cast<std::uint64_t>(number);
  }
}

// Equal to the last bit; which NaN it is does not matter.
template <class Number>
void expectSame(const std::vector<Number>& found, const std::vector<Number>& expected, const std::string& what) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (std::isnan(found[i]) && std::isnan(expected[i])) continue;
    ASSERT_EQ(bitsOf(found[i]), bitsOf(expected[i]))
        << what << " at " << i << ": " << found[i] << ", expected " << expected[i];
  }
}

template <class Number>
struct Extremes {
  std::vector<Number> max;
  std::vector<Number> min;

  void take(std::size_t column, Number value) {
    if (value > max[column]) max[column] = value;
    if (value < min[column]) min[column] = value;
  }
};

template <class Number>
Extremes<Number> startingExtremes(int width, std::mt19937& random) {
  const auto count = static_cast<std::size_t>(width);
  if (random() % 4 == 0)
    return {drawMany<Number>(Numbers::zeros, count, random), drawMany<Number>(Numbers::zeros, count, random)};
  return {std::vector<Number>(count, std::numeric_limits<Number>::lowest()),
          std::vector<Number>(count, std::numeric_limits<Number>::max())};
}

float misesOf(const float* row, int width, bool halved) {
  double s[6] = {};
  for (int c = 0; c < std::min(width, kernels::kTensorWidth); ++c) s[c] = static_cast<double>(row[c]);
  for (int c = 3; c < 6 && halved; ++c) s[c] *= 0.5;
  const double d1 = s[0] - s[1];
  const double d2 = s[1] - s[2];
  const double d3 = s[2] - s[0];
  const double normal = 0.5 * (d1 * d1 + d2 * d2 + d3 * d3);
  const double shear = 3.0 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5]);
  return static_cast<float>(std::sqrt(normal + shear));
}

template <class Number>
Number lengthOf(const Number* row, int width) {
  Number sum = 0;
  for (int c = 0; c < width; ++c) sum += row[c] * row[c];
  return std::sqrt(sum);
}

// All row counts up to a few vectors and their tails, and some of many rows.
std::vector<std::size_t> rowCounts() {
  std::vector<std::size_t> counts;
  for (std::size_t n = 0; n <= 300; ++n) counts.push_back(n);
  counts.insert(counts.end(), {1000, 4097, 50001});
  return counts;
}

class KernelsTest : public testing::TestWithParam<const Kernels*> {
 protected:
  const Kernels& version() const { return *GetParam(); }
  std::mt19937 random_{20261121};
};

template <class Number, class Kernel>
void checkColumns(Kernel&& kernel, std::mt19937& random) {
  for (const Numbers kind : kAllNumbers) {
    for (const std::size_t rows : rowCounts()) {
      const int width = static_cast<int>(random() % 9) + 1;
      const auto numbers = drawMany<Number>(kind, rows * static_cast<std::size_t>(width), random);
      Extremes<Number> expected = startingExtremes<Number>(width, random);
      Extremes<Number> found = expected;
      for (std::size_t i = 0; i < numbers.size(); ++i) expected.take(i % static_cast<std::size_t>(width), numbers[i]);
      kernel(numbers.data(), rows, width, found.max.data(), found.min.data());
      const std::string what = std::to_string(rows) + " rows of " + std::to_string(width);
      ASSERT_NO_FATAL_FAILURE(expectSame(found.max, expected.max, "maximum of " + what));
      ASSERT_NO_FATAL_FAILURE(expectSame(found.min, expected.min, "minimum of " + what));
    }
  }
}

TEST_P(KernelsTest, ColumnExtremesAreThoseOfThePlainLoop) {
  checkColumns<float>(version().columnExtremesFloat, random_);
  checkColumns<double>(version().columnExtremesDouble, random_);
}

template <class Number, class ExtremesKernel, class LengthsKernel>
void checkLengths(ExtremesKernel&& extremes, LengthsKernel&& lengths, std::mt19937& random) {
  for (const Numbers kind : kAllNumbers) {
    for (const std::size_t rows : rowCounts()) {
      const int width = random() % 2 == 0 ? 3 : static_cast<int>(random() % 7) + 1;
      const auto numbers = drawMany<Number>(kind, rows * static_cast<std::size_t>(width), random);
      Extremes<Number> expected = startingExtremes<Number>(1, random);
      Extremes<Number> found = expected;
      std::vector<Number> expectedLengths;
      for (std::size_t i = 0; i < rows; ++i) {
        expectedLengths.push_back(lengthOf(numbers.data() + i * static_cast<std::size_t>(width), width));
        expected.take(0, expectedLengths.back());
      }
      extremes(numbers.data(), rows, width, found.max.data(), found.min.data());
      std::vector<Number> foundLengths(rows);
      lengths(numbers.data(), rows, width, foundLengths.data());
      const std::string what = std::to_string(rows) + " rows of " + std::to_string(width);
      ASSERT_NO_FATAL_FAILURE(expectSame(found.max, expected.max, "longest of " + what));
      ASSERT_NO_FATAL_FAILURE(expectSame(found.min, expected.min, "shortest of " + what));
      ASSERT_NO_FATAL_FAILURE(expectSame(foundLengths, expectedLengths, "length of " + what));
    }
  }
}

TEST_P(KernelsTest, LengthsAreThoseOfThePlainLoop) {
  checkLengths<float>(version().lengthExtremesFloat, version().lengthsFloat, random_);
  checkLengths<double>(version().lengthExtremesDouble, version().lengthsDouble, random_);
}

template <class Number, class Kernel>
void checkSplitting(Kernel&& kernel, std::mt19937& random) {
  constexpr std::size_t kAt = 5;
  constexpr Number kUntouched = -12345;
  for (const std::size_t rows : rowCounts()) {
    for (const int width : {1, 2, 3, 4, 5, 6, 7}) {
      const int wanted = random() % 2 == 0 ? width : 1 + static_cast<int>(random() % static_cast<unsigned>(width));
      const auto numbers = drawMany<Number>(Numbers::bits, rows * static_cast<std::size_t>(width), random);
      std::vector<std::vector<Number>> columns(static_cast<std::size_t>(wanted),
                                               std::vector<Number>(rows + 2 * kAt, kUntouched));
      std::vector<Number*> pointers;
      for (auto& column : columns) pointers.push_back(column.data());
      kernel(numbers.data(), rows, width, pointers.data(), wanted, kAt);
      for (std::size_t c = 0; c < columns.size(); ++c) {
        std::vector<Number> expected(rows + 2 * kAt, kUntouched);
        for (std::size_t i = 0; i < rows; ++i) expected[kAt + i] = numbers[i * static_cast<std::size_t>(width) + c];
        const std::string what =
            "column " + std::to_string(c) + " of " + std::to_string(rows) + " x " + std::to_string(width);
        ASSERT_NO_FATAL_FAILURE(expectSame(columns[c], expected, what));
      }
    }
  }
}

TEST_P(KernelsTest, SplitColumnsAreThoseOfTheRows) {
  checkSplitting<float>(version().splitColumnsFloat, random_);
  checkSplitting<double>(version().splitColumnsDouble, random_);
}

void checkEquivalents(const Kernels& version, const std::vector<float>& numbers, int width, bool halved) {
  const std::size_t rows = numbers.size() / static_cast<std::size_t>(width);
  std::vector<float> expected;
  Extremes<float> extremes{{-kInfinity}, {kInfinity}};
  for (std::size_t i = 0; i < rows; ++i) {
    expected.push_back(misesOf(numbers.data() + i * static_cast<std::size_t>(width), width, halved));
    extremes.take(0, expected.back());
  }
  std::vector<float> found(rows);
  version.equivalents(numbers.data(), rows, width, halved, found.data());
  const std::string what = std::to_string(rows) + " tensors of " + std::to_string(width);
  ASSERT_NO_FATAL_FAILURE(expectSame(found, expected, "equivalent of " + what));

  kernels::EquivalentRange range;
  version.equivalentRange(numbers.data(), rows, width, halved, &range);
  Extremes<float> foundExtremes{{-kInfinity}, {kInfinity}};
  foundExtremes.take(0, static_cast<float>(std::sqrt(range.largest)));
  // A range without a tensor has no largest one; its smallest is infinite, as it starts.
  const auto smallest = static_cast<float>(std::sqrt(range.smallest));
  if (smallest < foundExtremes.min[0]) foundExtremes.min[0] = smallest;
  ASSERT_NO_FATAL_FAILURE(expectSame(foundExtremes.max, extremes.max, "largest of " + what));
  ASSERT_NO_FATAL_FAILURE(expectSame(foundExtremes.min, extremes.min, "smallest of " + what));
}

TEST_P(KernelsTest, EquivalentStressesAreThoseOfThePlainLoop) {
  for (const Numbers kind : kAllNumbers) {
    for (const std::size_t rows : rowCounts()) {
      const int width = std::vector<int>{6, 6, 4, 1, 2, 3, 5, 7, 9}[random_() % 9];
      const auto numbers = drawMany<float>(kind, rows * static_cast<std::size_t>(width), random_);
      ASSERT_NO_FATAL_FAILURE(checkEquivalents(version(), numbers, width, random_() % 2 == 0));
    }
  }
}

// New extremes all along, and ones that differ by less than single precision shows.
TEST_P(KernelsTest, NoExtremeOfTheEquivalentStressIsScreenedOut) {
  for (const float factor : {1.0F, 1e-12F, 1e-18F, 1e-22F, 1e12F, 1e18F}) {
    for (const float growth : {1.0F + 1.2e-7F, 1.0F - 1.2e-7F, 1.001F}) {
      std::vector<float> numbers;
      float scale = factor;
      for (int i = 0; i < 3000; ++i, scale *= growth) {
        for (int c = 0; c < 6; ++c) numbers.push_back(scale * static_cast<float>((i * 7 + c * 3) % 5 == c ? c : 1));
      }
      ASSERT_NO_FATAL_FAILURE(checkEquivalents(version(), numbers, 6, false));
      for (float& number : numbers) number += factor * 100;  // nearly hydrostatic
      ASSERT_NO_FATAL_FAILURE(checkEquivalents(version(), numbers, 6, false));
    }
  }
}

TEST_P(KernelsTest, MillionsOfRandomTensorsAgree) {
  for (int round = 0; round < 20; ++round) {
    const Numbers kind = kAllNumbers[static_cast<std::size_t>(round) % std::size(kAllNumbers)];
    ASSERT_NO_FATAL_FAILURE(checkEquivalents(version(), drawMany<float>(kind, 6 * 60'000, random_), 6, false));
  }
}

INSTANTIATE_TEST_SUITE_P(EveryVersion, KernelsTest, testing::ValuesIn(testedVersions()),
                         [](const auto& version) { return std::string(version.param->name); });

TEST(KernelVersions, ThePlainOneIsAlwaysThereAndTheLastIsTheBest) {
  EXPECT_STREQ(kernels::runnable().front()->name, "plain");
  EXPECT_EQ(&kernels::best(), kernels::runnable().back());
}

TEST(KernelVersions, NanNeverReplacesAnything) {
  const std::vector<float> rows(100, kNan);
  float max = 1;
  float min = 2;
  kernels::columnExtremes(rows.data(), rows.size(), 1, &max, &min);
  EXPECT_EQ(max, 1.0F);
  EXPECT_EQ(min, 2.0F);
}

}  // namespace
