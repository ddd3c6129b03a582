#include "elements/cross_section.h"

#include <cmath>
#include <numbers>

#include "elements/quadrature.h"

namespace elements {

namespace {

void addRectangle(CrossSection& section, double a, double b, double sign) {
  const std::vector<QuadraturePoint> line = gaussLegendre(2);
  for (const QuadraturePoint& u : line) {
    for (const QuadraturePoint& v : line) {
      section.push_back({u.at[0] * a / 2, v.at[0] * b / 2, sign * u.weight * v.weight * a * b / 4});
    }
  }
}

}  // namespace

CrossSection rectangle(double a, double b) {
  CrossSection section;
  addRectangle(section, a, b, 1.0);
  return section;
}

CrossSection ellipse(double a, double b) {
  const double area = std::numbers::pi * a * b / 4;
  return generalSection(area, area * a * a / 16, area * b * b / 16, 0.0);
}

CrossSection pipe(double outerRadius, double wall) {
  const double inner = outerRadius - wall;
  const double area = std::numbers::pi * (outerRadius * outerRadius - inner * inner);
  const double second = area * (outerRadius * outerRadius + inner * inner) / 4;
  return generalSection(area, second, second, 0.0);
}

CrossSection box(double a, double b, const std::array<double, 4>& walls) {
  CrossSection hole;
  addRectangle(hole, a - walls[0] - walls[2], b - walls[1] - walls[3], -1.0);
  CrossSection section = shifted(std::move(hole), (walls[2] - walls[0]) / 2, (walls[3] - walls[1]) / 2);
  addRectangle(section, a, b, 1.0);
  return section;
}

// Two points on each principal axis, a quarter of the area each.
CrossSection generalSection(double area, double i11, double i22, double i12) {
  if (area == 0.0) return {};
  const double mean = (i11 + i22) / 2;
  const double half = std::hypot((i11 - i22) / 2, i12);
  const double angle = std::atan2(i12, (i11 - i22) / 2) / 2;
  const double along = std::sqrt(2 * (mean + half) / area);
  const double across = std::sqrt(2 * std::fmax(mean - half, 0.0) / area);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return {{along * c, along * s, area / 4},
          {-along * c, -along * s, area / 4},
          {-across * s, across * c, area / 4},
          {across * s, -across * c, area / 4}};
}

CrossSection square(double area) { return generalSection(area, area * area / 12, area * area / 12, 0.0); }

CrossSection shifted(CrossSection section, double n1, double n2) {
  for (SectionPoint& point : section) {
    point.n1 += n1;
    point.n2 += n2;
  }
  return section;
}

}  // namespace elements
