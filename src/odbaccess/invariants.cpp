#include "odbaccess/invariants.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace odb_detail {

namespace {

// Six sweeps bring every symmetric 3x3 matrix of doubles to convergence; the bound is a guard.
constexpr int kMostSweeps = 16;

constexpr double kHuge = 0x1p500;

bool isFinite(const Tensor& s) {
  return std::all_of(s.begin(), s.end(), [](double c) { return std::isfinite(c); });
}

// Rotates a[p][q] away. r is the third index.
void rotate(double (&a)[3][3], int p, int q, int r) {
  const double apq = a[p][q];
  if (apq == 0.0) return;
  const double theta = (a[q][q] - a[p][p]) / (2.0 * apq);
  const double t = std::copysign(1.0, theta) / (std::abs(theta) + std::sqrt(theta * theta + 1.0));
  const double c = 1.0 / std::sqrt(t * t + 1.0);
  const double s = t * c;
  a[p][p] -= t * apq;
  a[q][q] += t * apq;
  a[p][q] = 0.0;
  const double arp = a[std::min(r, p)][std::max(r, p)];
  const double arq = a[std::min(r, q)][std::max(r, q)];
  a[std::min(r, p)][std::max(r, p)] = c * arp - s * arq;
  a[std::min(r, q)][std::max(r, q)] = s * arp + c * arq;
}

}  // namespace

float misesOf(const Tensor& s) {
  const double d1 = s[0] - s[1];
  const double d2 = s[1] - s[2];
  const double d3 = s[2] - s[0];
  return static_cast<float>(
      std::sqrt(0.5 * (d1 * d1 + d2 * d2 + d3 * d3) + 3.0 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5])));
}

float pressOf(const Tensor& s) { return static_cast<float>(-(s[0] + s[1] + s[2]) / 3.0); }

float inv3Of(const Tensor& s) {
  if (!isFinite(s)) return std::numeric_limits<float>::quiet_NaN();
  const double mean = (s[0] + s[1] + s[2]) / 3.0;
  const double a = s[0] - mean;
  const double b = s[1] - mean;
  const double c = s[2] - mean;
  const double determinant =
      a * (b * c - s[5] * s[5]) - s[3] * (s[3] * c - s[5] * s[4]) + s[4] * (s[3] * s[5] - b * s[4]);
  return static_cast<float>(std::cbrt(13.5 * determinant));
}

std::array<double, 3> principalValuesOf(const Tensor& s) {
  if (!isFinite(s)) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    return {nan, nan, nan};
  }
  // Near the end of the range sums would overflow; a power of two changes no digit.
  const bool isHuge = std::any_of(s.begin(), s.end(), [](double c) { return std::abs(c) > kHuge; });
  const double scale = isHuge ? 1.0 / kHuge : 1.0;
  double a[3][3] = {
      {s[0] * scale, s[3] * scale, s[4] * scale}, {0.0, s[1] * scale, s[5] * scale}, {0.0, 0.0, s[2] * scale}};
  for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
    const double diagonal = std::abs(a[0][0]) + std::abs(a[1][1]) + std::abs(a[2][2]);
    const double offDiagonal = std::abs(a[0][1]) + std::abs(a[0][2]) + std::abs(a[1][2]);
    // An off-diagonal element changes an eigenvalue by its square over the distance, or by itself at worst.
    if (offDiagonal <= diagonal * std::numeric_limits<double>::epsilon() * 0.125) break;
    rotate(a, 0, 1, 2);
    rotate(a, 0, 2, 1);
    rotate(a, 1, 2, 0);
  }
  std::array<double, 3> values = {a[0][0] / scale, a[1][1] / scale, a[2][2] / scale};
  std::sort(values.begin(), values.end(), std::greater<>());
  return values;
}

float trescaOf(const Tensor& s) {
  const std::array<double, 3> values = principalValuesOf(s);
  return static_cast<float>(values[0] - values[2]);
}

namespace {

struct InPlane {
  double center;
  double radius;
};

InPlane inPlane(const Tensor& s) {
  const double half = (s[0] - s[1]) / 2.0;
  return {(s[0] + s[1]) / 2.0, std::sqrt(half * half + s[3] * s[3])};
}

}  // namespace

float maxInPlanePrincipalOf(const Tensor& s) {
  const InPlane circle = inPlane(s);
  return static_cast<float>(circle.center + circle.radius);
}

float minInPlanePrincipalOf(const Tensor& s) {
  const InPlane circle = inPlane(s);
  return static_cast<float>(circle.center - circle.radius);
}

Invariants invariantsOf(const Tensor& s) {
  const std::array<double, 3> principal = principalValuesOf(s);
  const InPlane circle = inPlane(s);
  return {static_cast<float>(principal[0] - principal[2]),
          pressOf(s),
          inv3Of(s),
          static_cast<float>(principal[0]),
          static_cast<float>(principal[1]),
          static_cast<float>(principal[2]),
          static_cast<float>(circle.center + circle.radius),
          static_cast<float>(circle.center - circle.radius),
          static_cast<float>(s[2])};
}

InvariantMember invariantMember(odb_Enum::odb_InvariantEnum code) {
  switch (code) {
    case odb_Enum::tresca:
      return &Invariants::tresca;
    case odb_Enum::press:
      return &Invariants::press;
    case odb_Enum::inv3:
      return &Invariants::inv3;
    case odb_Enum::maxPrincipal:
      return &Invariants::maxPrincipal;
    case odb_Enum::midPrincipal:
      return &Invariants::midPrincipal;
    case odb_Enum::minPrincipal:
      return &Invariants::minPrincipal;
    case odb_Enum::maxInPlanePrincipal:
      return &Invariants::maxInPlanePrincipal;
    case odb_Enum::minInPlanePrincipal:
      return &Invariants::minInPlanePrincipal;
    case odb_Enum::outOfPlanePrincipal:
      return &Invariants::outOfPlanePrincipal;
    default:
      return nullptr;
  }
}

}  // namespace odb_detail
