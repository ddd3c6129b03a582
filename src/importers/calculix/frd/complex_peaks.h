// The largest values that complex results have over a whole cycle.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "importers/calculix/frd/field_mapping.h"

namespace importers::calculix {

// A result with the real part a and the imaginary part b is a cos(t) - b sin(t) over the phases t of a cycle.
enum class PeakKind {
  amplitude,  // of a scalar: the largest absolute value
  length,     // of a vector
  mises       // of a tensor: the largest equivalent stress
};

struct PeakField {
  PeakKind kind = PeakKind::amplitude;
  std::string name;          // "NT_PEAK", "U_PEAK", "S_MISES_PEAK"
  std::string description;   // begins as that of the field it comes from, so that the same keywords take it
  std::vector<int> columns;  // of both blocks
};

// The peak field of a field with an imaginary part; nothing for an imaginary part itself and for error estimates.
std::optional<PeakField> peakOf(const MappedField& real);

// One number a row. `real` and `imaginary` are [rows, components]: one component for an amplitude, any number for a
// length, six in the order 11, 22, 33, 12, 13, 23 for mises.
//
// With A = |a|^2, B = |b|^2 and C = a.b, the square of the length is (A+B)/2 + (A-B)/2 cos(2t) - C sin(2t), so its
// largest value is (A+B)/2 + sqrt(((A-B)/2)^2 + C^2). The equivalent stress is the length of the deviator in the inner
// product 3/2 s:s, and the same holds for it.
std::vector<float> peaks(PeakKind kind, std::span<const float> real, std::span<const float> imaginary,
                         std::size_t components);

}  // namespace importers::calculix
