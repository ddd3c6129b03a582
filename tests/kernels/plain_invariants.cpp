#include "plain_invariants.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// A third of the exponent as the first guess, then three steps of Halley's iteration.
double cubeRoot(double x) {
  if (x == 0.0 || !std::isfinite(x)) return x;
  const double size = std::abs(x);
  const std::uint64_t third = (std::bit_cast<std::uint64_t>(size) >> 32U) / 3;
  auto root = std::bit_cast<double>((third << 32U) + 0x2A9F789300000000U);
  for (int i = 0; i < 3; ++i) {
    const double cube = root * root * root;
    root = root * ((cube + 2.0 * size) / (2.0 * cube + size));
  }
  return std::copysign(root, x);
}

// Of the two angles by which a rotation makes apq vanish, the tangent of the smaller one.
double tangent(double app, double aqq, double apq) {
  if (std::abs(apq) < 1e-150) return 0.0;
  const double d = aqq - app;
  const double h = apq + apq;
  const double w = std::sqrt(d * d + h * h);
  return h / (d >= 0.0 ? d + w : d - w);
}

void rotate(double& app, double& aqq, double& apq, double& arp, double& arq) {
  const double t = tangent(app, aqq, apq);
  const double c = 1.0 / std::sqrt(t * t + 1.0);
  const double s = t * c;
  const double p = c * arp - s * arq;
  const double q = s * arp + c * arq;
  app -= t * apq;
  aqq += t * apq;
  apq = 0.0;
  arp = p;
  arq = q;
}

void correct(double& app, double& aqq, double apq) {
  const double t = tangent(app, aqq, apq);
  app -= t * apq;
  aqq += t * apq;
}

// Cyclic Jacobi rotations until the elements off the diagonal are a billionth of it, and what they still change.
std::array<double, 3> eigenvalues(std::array<double, 6> a) {
  const bool isHuge = std::any_of(a.begin(), a.end(), [](double x) { return std::abs(x) > 0x1p500; });
  const double scale = isHuge ? 0x1p-500 : 1.0;
  for (double& x : a) x *= scale;
  auto& [a11, a22, a33, a12, a13, a23] = a;
  for (int sweep = 0; sweep < 16; ++sweep) {
    const double bound = (std::abs(a11) + std::abs(a22) + std::abs(a33)) * 1e-9;
    if (std::abs(a12) + std::abs(a13) + std::abs(a23) <= bound) break;
    rotate(a11, a22, a12, a13, a23);
    rotate(a11, a33, a13, a12, a23);
    rotate(a22, a33, a23, a12, a13);
  }
  correct(a11, a22, a12);
  correct(a11, a33, a13);
  correct(a22, a33, a23);
  std::array<double, 3> found = {a11 / scale, a22 / scale, a33 / scale};
  const auto order = [&](std::size_t high, std::size_t low) {
    if (found[high] < found[low]) std::swap(found[high], found[low]);
  };
  order(0, 1);
  order(1, 2);
  order(0, 1);
  return found;
}

double thirdInvariant(const std::array<double, 6>& s) {
  const double mean = (s[0] + s[1] + s[2]) / 3.0;
  const double a = s[0] - mean;
  const double b = s[1] - mean;
  const double c = s[2] - mean;
  const double determinant =
      a * (b * c - s[5] * s[5]) - s[3] * (s[3] * c - s[5] * s[4]) + s[4] * (s[3] * s[5] - b * s[4]);
  return cubeRoot(13.5 * determinant);
}

}  // namespace

std::array<float, 9> plainInvariants(const std::array<double, 6>& s) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const bool isFinite = std::all_of(s.begin(), s.end(), [](double x) { return std::isfinite(x); });
  const std::array<double, 3> values = isFinite ? eigenvalues(s) : std::array<double, 3>{kNan, kNan, kNan};
  const double half = (s[0] - s[1]) / 2.0;
  const double center = (s[0] + s[1]) / 2.0;
  const double radius = std::sqrt(half * half + s[3] * s[3]);
  const double press = -(s[0] + s[1] + s[2]) / 3.0;
  const std::array<double, 9> found = {values[0] - values[2],
                                       press,
                                       isFinite ? thirdInvariant(s) : kNan,
                                       values[0],
                                       values[1],
                                       values[2],
                                       center + radius,
                                       center - radius,
                                       s[2]};
  std::array<float, 9> rounded{};
  std::transform(found.begin(), found.end(), rounded.begin(), [](double x) { return static_cast<float>(x); });
  return rounded;
}
