// Quantities derived from one tensor.
#pragma once

#include <array>

#include "odbaccess/odb_Enum.h"

namespace odb_detail {

// Components 11, 22, 33, 12, 13, 23; those not stored are 0, shears are tensor components.
using Tensor = std::array<double, 6>;

// All invariants are computed in double, in the order of operations written here, and rounded once to float.
// Where a component is not finite, the principal values, tresca and inv3 are NaN.

// The equivalent stress of von Mises (Simo and Hughes, Computational Inelasticity, sec. 2.3.1):
// sqrt(0.5 (d1^2 + d2^2 + d3^2) + 3 (s12^2 + s13^2 + s23^2)) with the differences d of the normal components.
float misesOf(const Tensor& s);

// The hydrostatic pressure, -(s11 + s22 + s33)/3.
float pressOf(const Tensor& s);

// The third invariant of the deviator as a stress, cbrt(27/2 det dev s): +mises in uniaxial tension.
float inv3Of(const Tensor& s);

// The eigenvalues, descending. Found by cyclic Jacobi rotations (Golub and Van Loan, Matrix Computations, sec.
// 8.5), which keep the small eigenvalues of a nearly uniaxial tensor accurate where closed forms lose them.
std::array<double, 3> principalValuesOf(const Tensor& s);

// All that a field value gives of a tensor but the equivalent stress.
struct Invariants {
  float tresca;
  float press;
  float inv3;
  float maxPrincipal;
  float midPrincipal;
  float minPrincipal;
  float maxInPlanePrincipal;
  float minInPlanePrincipal;
  float outOfPlanePrincipal;
};
Invariants invariantsOf(const Tensor& s);

// The one that has that code; null for the equivalent stress and the magnitude.
using InvariantMember = float Invariants::*;
InvariantMember invariantMember(odb_Enum::odb_InvariantEnum code);

// The largest minus the smallest principal value.
float trescaOf(const Tensor& s);

// The principal values in the 1-2 plane, c + r and c - r with c = (s11 + s22)/2, r = sqrt(((s11 - s22)/2)^2 + s12^2).
float maxInPlanePrincipalOf(const Tensor& s);
float minInPlanePrincipalOf(const Tensor& s);

}  // namespace odb_detail
