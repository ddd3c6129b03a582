#include "importers/calculix/frd/complex_peaks.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::FloatEq;

// The value at one phase of a cycle, straight from its definition.
double atPhase(PeakKind kind, const std::vector<float>& real, const std::vector<float>& imaginary, double phase) {
  std::vector<double> v;
  for (std::size_t i = 0; i < real.size(); ++i) {
    v.push_back(static_cast<double>(real[i]) * std::cos(phase) - static_cast<double>(imaginary[i]) * std::sin(phase));
  }
  if (kind != PeakKind::mises) {
    double sum = 0.0;
    for (const double component : v) sum += component * component;
    return std::sqrt(sum);
  }
  const double normal = std::pow(v[0] - v[1], 2) + std::pow(v[1] - v[2], 2) + std::pow(v[2] - v[0], 2);
  return std::sqrt(0.5 * normal + 3 * (v[3] * v[3] + v[4] * v[4] + v[5] * v[5]));
}

double overAllPhases(PeakKind kind, const std::vector<float>& real, const std::vector<float>& imaginary) {
  double largest = 0.0;
  for (int i = 0; i < 3600; ++i) {
    largest = std::max(largest, atPhase(kind, real, imaginary, 2 * std::numbers::pi * i / 3600));
  }
  return largest;
}

TEST(ComplexPeaks, AmplitudesAreThoseOfComplexNumbers) {
  EXPECT_THAT(peaks(PeakKind::amplitude, std::vector<float>{3, -2, 0}, std::vector<float>{4, 0, -7}, 1),
              ElementsAre(FloatEq(5), FloatEq(2), FloatEq(7)));
}

TEST(ComplexPeaks, ACircleIsAsLongInEveryPhaseAndAnEllipseAsItsLongAxis) {
  EXPECT_THAT(peaks(PeakKind::length, std::vector<float>{2, 0, 0, 1, 0, 0}, std::vector<float>{0, 2, 0, 0, 3, 0}, 3),
              ElementsAre(FloatEq(2), FloatEq(3)));
}

TEST(ComplexPeaks, LargestLengthsAndStressesAreThoseOfAllPhases) {
  unsigned state = 1;
  const auto next = [&state] {
    state = state * 1664525U + 1013904223U;
    return static_cast<float>(state >> 8U) / 8388608.0F - 1.0F;
  };
  for (int round = 0; round < 50; ++round) {
    for (const auto& [kind, width] : {std::pair(PeakKind::length, 3U), std::pair(PeakKind::mises, 6U)}) {
      std::vector<float> real(width);
      std::vector<float> imaginary(width);
      std::generate(real.begin(), real.end(), next);
      std::generate(imaginary.begin(), imaginary.end(), next);
      const double expected = overAllPhases(kind, real, imaginary);
      // 0.05 degrees beside the largest phase cost 1.5e-6 of the value.
      EXPECT_NEAR(peaks(kind, real, imaginary, width).at(0), expected, 3e-6 * expected);
    }
  }
}

TEST(ComplexPeaks, PressureCostsNoDigits) {
  // A shear of 1 in phase and one of 1 a quarter of a cycle later, under a pressure of 1e6.
  const std::vector<float> real = {1e6F, 1e6F, 1e6F, 1, 0, 0};
  const std::vector<float> imaginary = {-1e6F, -1e6F, -1e6F, 0, 1, 0};
  EXPECT_THAT(peaks(PeakKind::mises, real, imaginary, 6), ElementsAre(FloatEq(std::sqrt(3.0F))));
}

TEST(ComplexPeaks, FieldsAreDescribedAsThoseTheyComeFrom) {
  EXPECT_EQ(peakOf(vectorField("U", "Spatial displacement", {0, 1, 2}))->name, "U_PEAK");
  const auto stress = peakOf(tensorField("S", "Stress components", true, {0, 1, 2, 3, 5, 4}));
  EXPECT_EQ(stress->name, "S_MISES_PEAK");
  EXPECT_EQ(stress->description, "Stress components, largest equivalent value over a cycle");
  EXPECT_EQ(peakOf(scalarField("NT", "Nodal temperature", 0))->kind, PeakKind::amplitude);
  EXPECT_FALSE(peakOf(vectorField("U_IM", "Spatial displacement, imaginary part", {0, 1, 2})));
  EXPECT_FALSE(peakOf(scalarField("S_ERROR", "Estimated relative error of the stress, percent", 0)));
}

}  // namespace
}  // namespace importers::calculix
