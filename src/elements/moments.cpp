#include "elements/moments.h"

namespace elements {

namespace {

Symmetric3 productsOf(const Vector3& x) {
  return {x[0] * x[0], x[1] * x[1], x[2] * x[2], x[0] * x[1], x[0] * x[2], x[1] * x[2]};
}

// second + mass * x x^T: the moments about a point that lies at -x from the centre.
Symmetric3 moved(const Symmetric3& second, double mass, const Vector3& x) {
  const Symmetric3 products = productsOf(x);
  Symmetric3 result = second;
  for (std::size_t k = 0; k < result.size(); ++k) result[k] += mass * products[k];
  return result;
}

Symmetric3 inertiaOf(const Symmetric3& m) { return {m[1] + m[2], m[0] + m[2], m[0] + m[1], -m[3], -m[4], -m[5]}; }

}  // namespace

Symmetric3 Moments::inertiaAboutCentre() const { return inertiaOf(moved(second_, -mass_, centre() - about_)); }

Symmetric3 Moments::inertiaAboutOrigin() const {
  return inertiaOf(moved(moved(second_, -mass_, centre() - about_), mass_, centre()));
}

}  // namespace elements
