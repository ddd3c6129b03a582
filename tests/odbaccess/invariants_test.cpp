#include "odbaccess/invariants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace odb_detail {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Invariants, OfUniaxialTension) {
  const Tensor s = {100, 0, 0, 0, 0, 0};
  EXPECT_EQ(misesOf(s), 100.0F);
  EXPECT_EQ(trescaOf(s), 100.0F);
  EXPECT_FLOAT_EQ(inv3Of(s), 100.0F);
  EXPECT_FLOAT_EQ(pressOf(s), -33.333332F);
  EXPECT_EQ(maxInPlanePrincipalOf(s), 100.0F);
  EXPECT_EQ(minInPlanePrincipalOf(s), 0.0F);
}

TEST(Invariants, OfPureShear) {
  const Tensor s = {0, 0, 0, 50, 0, 0};
  EXPECT_FLOAT_EQ(misesOf(s), 86.60254F);
  const auto principal = principalValuesOf(s);
  EXPECT_NEAR(principal[0], 50, 1e-13);
  EXPECT_NEAR(principal[1], 0, 1e-13);
  EXPECT_NEAR(principal[2], -50, 1e-13);
  EXPECT_FLOAT_EQ(trescaOf(s), 100.0F);
  EXPECT_NEAR(inv3Of(s), 0.0F, 1e-4);
  EXPECT_FLOAT_EQ(maxInPlanePrincipalOf(s), 50.0F);
  EXPECT_FLOAT_EQ(minInPlanePrincipalOf(s), -50.0F);
}

TEST(Invariants, OfATensorWithKnownEigenvalues) {
  // Eigenvalues 6, 3, 1: diag(6, 3, 1) turned by the orthogonal matrix with columns (1,2,2)/3, (2,1,-2)/3, (2,-2,1)/3.
  const Tensor s = {22.0 / 9, 31.0 / 9, 37.0 / 9, 14.0 / 9, 2.0 / 9, 16.0 / 9};
  const auto principal = principalValuesOf(s);
  EXPECT_NEAR(principal[0], 6, 1e-14);
  EXPECT_NEAR(principal[1], 3, 1e-14);
  EXPECT_NEAR(principal[2], 1, 1e-14);
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
    ASSERT_NEAR(p[0] + p[1] + p[2], trace, 1e-13);
    ASSERT_NEAR(p[0] * p[0] + p[1] * p[1] + p[2] * p[2], squares, 1e-12);
    ASSERT_NEAR(p[0] * p[1] * p[2], determinant, 1e-12);
  }
}

TEST(Invariants, ANonFiniteComponentMakesWhatRestsOnEigenvaluesNaN) {
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    const Tensor s = {1, 2, 3, 4, bad, 6};
    for (const double value : principalValuesOf(s)) EXPECT_TRUE(std::isnan(value));
    EXPECT_TRUE(std::isnan(trescaOf(s)));
    EXPECT_TRUE(std::isnan(inv3Of(s)));
    EXPECT_EQ(pressOf(s), -2.0F);
  }
  EXPECT_EQ(misesOf({1, 2, 3, kInfinity, 0, 0}), std::numeric_limits<float>::infinity());
}

TEST(Invariants, HugeTensorsDoNotOverflowOnTheWay) {
  const auto principal = principalValuesOf({1.5e308, -1.5e308, 0, 1e307, 0, 0});
  EXPECT_NEAR(principal[0] / 1.5e308, std::sqrt(1 + 1.0 / 225), 1e-12);
  EXPECT_NEAR(principal[1], 0, 1e295);
}

}  // namespace
}  // namespace odb_detail
