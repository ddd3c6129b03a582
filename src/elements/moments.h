// Mass with its first and second moments.
#pragma once

#include <array>

#include "elements/vector3.h"

namespace elements {

// Symmetric, in the order 11, 22, 33, 12, 13, 23.
using Symmetric3 = std::array<double, 6>;

// A sum over small masses. Moments are kept about a point near the model, so that they do not drown in the squared
// distance of a model far from the origin.
class Moments {
 public:
  explicit Moments(const Vector3& about) : about_(about) {}

  void add(double mass, const Vector3& at) {
    const Vector3 x = at - about_;
    mass_ += mass;
    for (std::size_t k = 0; k < 3; ++k) {
      first_[k] += mass * x[k];
      second_[k] += mass * x[k] * x[k];
    }
    second_[3] += mass * x[0] * x[1];
    second_[4] += mass * x[0] * x[2];
    second_[5] += mass * x[1] * x[2];
  }

  // A mass whose own second moments ∫ρ x_i x_j about its centre are not 0, such as a ring.
  void add(double mass, const Vector3& centre, const Symmetric3& own) {
    add(mass, centre);
    for (std::size_t k = 0; k < own.size(); ++k) second_[k] += own[k];
  }

  double mass() const { return mass_; }
  // Of a mass that is not 0.
  Vector3 centre() const { return about_ + (1.0 / mass_) * first_; }
  // Inertia tensors, products with the sign of the tensor: I12 = -∫ρ x y.
  Symmetric3 inertiaAboutCentre() const;
  Symmetric3 inertiaAboutOrigin() const;

 private:
  Vector3 about_;
  double mass_ = 0.0;
  Vector3 first_{};
  Symmetric3 second_{};
};

}  // namespace elements
