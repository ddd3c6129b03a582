#include "odbaccess/invariants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace odb_detail {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// One invariant of one tensor.
float invariantOf(const Tensor& s, odb_InvariantEnum code) {
  InvariantStretch found;
  findInvariants(&s, 1, found);
  return found.numbers[0][invariantPlace(code)];
}

std::array<double, 3> principalValuesOf(const Tensor& s) {
  return {static_cast<double>(invariantOf(s, odb_Enum::maxPrincipal)),
          static_cast<double>(invariantOf(s, odb_Enum::midPrincipal)),
          static_cast<double>(invariantOf(s, odb_Enum::minPrincipal))};
}

// What rounding to float leaves of a number of that size.
double roundingOf(double size) { return size * 6e-8; }

TEST(Invariants, OfUniaxialTension) {
  const Tensor s = {100, 0, 0, 0, 0, 0};
  EXPECT_EQ(misesOf(s), 100.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::tresca), 100.0F);
  EXPECT_FLOAT_EQ(invariantOf(s, odb_Enum::inv3), 100.0F);
  EXPECT_FLOAT_EQ(invariantOf(s, odb_Enum::press), -33.333332F);
  EXPECT_EQ(invariantOf(s, odb_Enum::maxPrincipal), 100.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::midPrincipal), 0.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::minPrincipal), 0.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::maxInPlanePrincipal), 100.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::minInPlanePrincipal), 0.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::outOfPlanePrincipal), 0.0F);
}

TEST(Invariants, OfUniaxialCompression) {
  const Tensor s = {0, 0, -100, 0, 0, 0};
  EXPECT_FLOAT_EQ(invariantOf(s, odb_Enum::inv3), -100.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::minPrincipal), -100.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::outOfPlanePrincipal), -100.0F);
  EXPECT_EQ(invariantOf(s, odb_Enum::maxInPlanePrincipal), 0.0F);
}

TEST(Invariants, OfPureShear) {
  const Tensor s = {0, 0, 0, 50, 0, 0};
  EXPECT_FLOAT_EQ(misesOf(s), 86.60254F);
  const auto principal = principalValuesOf(s);
  EXPECT_NEAR(principal[0], 50, roundingOf(50));
  EXPECT_NEAR(principal[1], 0, 1e-13);
  EXPECT_NEAR(principal[2], -50, roundingOf(50));
  EXPECT_FLOAT_EQ(invariantOf(s, odb_Enum::tresca), 100.0F);
  EXPECT_NEAR(invariantOf(s, odb_Enum::inv3), 0.0F, 1e-4);
  EXPECT_FLOAT_EQ(invariantOf(s, odb_Enum::maxInPlanePrincipal), 50.0F);
  EXPECT_FLOAT_EQ(invariantOf(s, odb_Enum::minInPlanePrincipal), -50.0F);
}

TEST(Invariants, OfATensorWithKnownEigenvalues) {
  // Eigenvalues 6, 3, 1: diag(6, 3, 1) turned by the orthogonal matrix with columns (1,2,2)/3, (2,1,-2)/3, (2,-2,1)/3.
  const Tensor s = {22.0 / 9, 31.0 / 9, 37.0 / 9, 14.0 / 9, 2.0 / 9, 16.0 / 9};
  const auto principal = principalValuesOf(s);
  EXPECT_NEAR(principal[0], 6, roundingOf(6));
  EXPECT_NEAR(principal[1], 3, roundingOf(6));
  EXPECT_NEAR(principal[2], 1, roundingOf(6));
}

TEST(Invariants, ANearlyUniaxialTensorKeepsItsSmallPrincipalValues) {
  // A rotation about 3 of diag(1e6, 0, 0): the other two are 0 to the accuracy of the largest.
  const double c = std::cos(0.3);
  const double s = std::sin(0.3);
  const auto principal = principalValuesOf({1e6 * c * c, 1e6 * s * s, 0, 1e6 * c * s, 0, 0});
  EXPECT_NEAR(principal[1], 0, 1e-9);
  EXPECT_NEAR(principal[2], 0, 1e-9);
}

TEST(Invariants, PrincipalValuesSolveTheCharacteristicEquation) {
  std::mt19937 random(7);
  std::normal_distribution<double> normal;
  for (int i = 0; i < 10000; ++i) {
    Tensor s;
    for (double& component : s) component = normal(random);
    const auto p = principalValuesOf(s);
    EXPECT_GE(p[0], p[1]);
    EXPECT_GE(p[1], p[2]);
    const double trace = s[0] + s[1] + s[2];
    const double squares = s[0] * s[0] + s[1] * s[1] + s[2] * s[2] + 2 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5]);
    const double determinant =
        s[0] * (s[1] * s[2] - s[5] * s[5]) - s[3] * (s[3] * s[2] - s[5] * s[4]) + s[4] * (s[3] * s[5] - s[1] * s[4]);
    const double size = std::sqrt(squares);
    ASSERT_NEAR(p[0] + p[1] + p[2], trace, 3 * roundingOf(size));
    ASSERT_NEAR(p[0] * p[0] + p[1] * p[1] + p[2] * p[2], squares, 4 * roundingOf(squares));
    ASSERT_NEAR(p[0] * p[1] * p[2], determinant, 4 * roundingOf(size * size * size));
  }
}

TEST(Invariants, ANonFiniteComponentMakesWhatRestsOnEigenvaluesNaN) {
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    const Tensor s = {1, 2, 3, 4, bad, 6};
    for (const double value : principalValuesOf(s)) EXPECT_TRUE(std::isnan(value));
    EXPECT_TRUE(std::isnan(invariantOf(s, odb_Enum::tresca)));
    EXPECT_TRUE(std::isnan(invariantOf(s, odb_Enum::inv3)));
    EXPECT_EQ(invariantOf(s, odb_Enum::press), -2.0F);
  }
  EXPECT_EQ(misesOf({1, 2, 3, kInfinity, 0, 0}), std::numeric_limits<float>::infinity());
}

TEST(Invariants, HugeTensorsDoNotOverflowOnTheWay) {
  // 1.5e308 (1, -1, 0) with a shear of a fifteenth: the middle eigenvalue stays 0, the others are beyond a float.
  const auto principal = principalValuesOf({1.5e308, -1.5e308, 0, 1e307, 0, 0});
  EXPECT_EQ(principal[0], kInfinity);
  EXPECT_EQ(principal[1], 0.0);
  EXPECT_EQ(principal[2], -kInfinity);
  const auto large = principalValuesOf({1.5e38, -1.5e38, 0, 1e37, 0, 0});
  EXPECT_NEAR(large[0] / 1.5e38, std::sqrt(1 + 1.0 / 225), 1e-7);
}

TEST(Invariants, NearlyEqualEigenvaluesAreFoundToTheLastDigitOfAFloat) {
  // diag(1, 1, 1) with perturbations far below it: eigenvalues 1 + e (root of 2), 1, 1 - e (root of 2).
  for (const double e : {1e-3, 1e-5, 1e-7, 1e-9, 1e-12}) {
    const auto principal = principalValuesOf({1, 1, 1, e, 0, e});
    EXPECT_NEAR(principal[0], 1 + e * std::sqrt(2.0), roundingOf(1)) << e;
    EXPECT_NEAR(principal[1], 1, roundingOf(1)) << e;
    EXPECT_NEAR(principal[2], 1 - e * std::sqrt(2.0), roundingOf(1)) << e;
  }
}

TEST(Invariants, RowsInSinglePrecisionAgreeWithTensorsToTheLastBit) {
  std::mt19937 random(9);
  std::normal_distribution<float> normal(0, 100);
  for (const int width : {4, 6}) {
    for (const bool engineeringShear : {false, true}) {
      constexpr std::size_t kCount = InvariantStretch::kRows;
      std::vector<float> rows(kCount * static_cast<std::size_t>(width));
      for (float& number : rows)
        number = random() % 8 == 0 ? 0.0F : normal(random) * (random() % 16 == 0 ? 1e-20F : 1.0F);
      rows[20] = std::numeric_limits<float>::quiet_NaN();
      rows[70] = std::numeric_limits<float>::infinity();
      std::vector<Tensor> tensors(kCount);
      for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t c = i % static_cast<std::size_t>(width);
        tensors[i / static_cast<std::size_t>(width)][c] =
            static_cast<double>(rows[i]) * (engineeringShear && c >= 3 ? 0.5 : 1.0);
      }
      InvariantStretch expected;
      findInvariants(tensors.data(), kCount, expected);
      InvariantStretch found;
      findInvariants(rows.data(), kCount, width, engineeringShear, found);
      for (std::size_t place = 0; place < kInvariants; ++place) {
        for (std::size_t i = 0; i < kCount; ++i) {
          const float a = found.numbers[i][place];
          const float b = expected.numbers[i][place];
          ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b))) << place << ", " << i << ": " << a << ", " << b;
        }
      }
    }
  }
}

}  // namespace
}  // namespace odb_detail
