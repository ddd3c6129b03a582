// The mass properties of a step.
#pragma once

#include <array>

namespace importers::calculix {

// Inertia tensors have the order 11, 22, 33, 12, 13, 23; products carry the sign of the tensor, I12 = -∫ρ x y.
struct StepMass {
  double mass = 0.0;
  std::array<double, 3> centre{};
  std::array<double, 6> inertiaAboutCentre{};
  std::array<double, 6> inertiaAboutOrigin{};
};

}  // namespace importers::calculix
