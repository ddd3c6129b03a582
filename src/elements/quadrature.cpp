#include "elements/quadrature.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace elements {

namespace {

// The Legendre polynomial of degree n and its derivative (Abramowitz & Stegun, 22.7.10 and 22.8.5).
struct Legendre {
  double value;
  double derivative;
};
Legendre legendre(int n, double x) {
  double before = 1.0;
  double value = x;
  for (int k = 2; k <= n; ++k) {
    const double next = ((2 * k - 1) * x * value - (k - 1) * before) / k;
    before = value;
    value = next;
  }
  return {value, n * (x * value - before) / (x * x - 1.0)};
}

// A point of a product rule, each factor moved to 0..1 where the cell collapses.
struct Factors {
  double u, v, w, weight;
};

double toUnit(double x) { return 0.5 * (x + 1.0); }

// The square and the cube shrunk to a triangle and a tetrahedron (Stroud, Approximate Calculation of Multiple
// Integrals, conical product formulas).
QuadraturePoint collapsed(Cell cell, const Factors& f) {
  const double u = toUnit(f.u);
  const double v = toUnit(f.v);
  if (cell == Cell::tetrahedron) {
    const double w = toUnit(f.w);
    return {{u, v * (1 - u), w * (1 - u) * (1 - v)}, f.weight / 8 * (1 - u) * (1 - u) * (1 - v)};
  }
  return {{u, v * (1 - u), f.w}, f.weight / 4 * (1 - u)};
}

bool isCollapsed(Cell cell) { return cell == Cell::triangle || cell == Cell::tetrahedron || cell == Cell::wedge; }

int dimension(Cell cell) {
  if (cell == Cell::line) return 1;
  return cell == Cell::triangle || cell == Cell::quadrilateral ? 2 : 3;
}

}  // namespace

std::vector<QuadraturePoint> gaussLegendre(int n) {
  if (n == 1) return {{{0.0, 0.0, 0.0}, 2.0}};
  std::vector<QuadraturePoint> points;
  for (int i = 1; i <= n; ++i) {
    // Newton's method from the asymptotic place of the i-th root (Abramowitz & Stegun, 22.16.6).
    double x = -std::cos(std::numbers::pi * (i - 0.25) / (n + 0.5));
    for (int step = 0; step < 8; ++step) {
      const Legendre polynomial = legendre(n, x);
      x -= polynomial.value / polynomial.derivative;
    }
    const double slope = legendre(n, x).derivative;
    points.push_back({{x, 0.0, 0.0}, 2.0 / ((1.0 - x * x) * slope * slope)});
  }
  return points;
}

std::vector<QuadraturePoint> quadrature(Cell cell, int n) {
  const std::vector<QuadraturePoint> line = gaussLegendre(n);
  const std::vector<QuadraturePoint> nothing = {{{}, 1.0}};
  const int directions = dimension(cell);
  std::vector<QuadraturePoint> points;
  for (const QuadraturePoint& u : line) {
    for (const QuadraturePoint& v : directions > 1 ? line : nothing) {
      for (const QuadraturePoint& w : directions > 2 ? line : nothing) {
        const Factors factors = {u.at[0], v.at[0], w.at[0], u.weight * v.weight * w.weight};
        points.push_back(isCollapsed(cell) ? collapsed(cell, factors)
                                           : QuadraturePoint{{factors.u, factors.v, factors.w}, factors.weight});
      }
    }
  }
  return points;
}

}  // namespace elements
