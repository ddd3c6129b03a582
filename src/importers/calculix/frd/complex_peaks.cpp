#include "importers/calculix/frd/complex_peaks.h"

#include <cmath>

namespace importers::calculix {

namespace {

// An estimate of the error of the mesh has no phase.
constexpr std::string_view kEstimate = "S_ERROR";

double dot(const float* a, const float* b, std::size_t components) {
  double sum = 0.0;
  for (std::size_t i = 0; i < components; ++i) sum += static_cast<double>(a[i]) * static_cast<double>(b[i]);
  return sum;
}

// 3/2 s:t of the deviators of two tensors. The differences of normal components are formed first, so that a large
// pressure costs no digits: 3/2 s:t = 1/2 sum of the products of differences + 3 sum of the products of shears.
double deviatoric(const float* a, const float* b, std::size_t /*components*/) {
  const auto difference = [](const float* t, std::size_t i, std::size_t k) {
    return static_cast<double>(t[i]) - static_cast<double>(t[k]);
  };
  const double normal = difference(a, 0, 1) * difference(b, 0, 1) + difference(a, 1, 2) * difference(b, 1, 2) +
                        difference(a, 2, 0) * difference(b, 2, 0);
  return 0.5 * normal + 3.0 * dot(a + 3, b + 3, 3);
}

}  // namespace

std::optional<PeakField> peakOf(const MappedField& real) {
  if (real.name.ends_with(kImaginaryEnding) || real.name == kEstimate) return std::nullopt;
  if (real.isTensor()) {
    if (real.columns.size() != kTensorComponents) return std::nullopt;
    return PeakField{PeakKind::mises, real.name + "_MISES_PEAK",
                     real.info.description + ", largest equivalent value over a cycle", real.columns};
  }
  if (real.columns.size() > 1) {
    return PeakField{PeakKind::length, real.name + "_PEAK", real.info.description + ", largest length over a cycle",
                     real.columns};
  }
  return PeakField{PeakKind::amplitude, real.name + "_PEAK", real.info.description + ", amplitude over a cycle",
                   real.columns};
}

std::vector<float> peaks(PeakKind kind, std::span<const float> real, std::span<const float> imaginary,
                         std::size_t components) {
  const auto product = kind == PeakKind::mises ? deviatoric : dot;
  std::vector<float> found;
  found.reserve(real.size() / components);
  for (std::size_t at = 0; at + components <= real.size(); at += components) {
    const float* const a = real.data() + at;
    const float* const b = imaginary.data() + at;
    const double ofReal = product(a, a, components);
    const double ofImaginary = product(b, b, components);
    const double largest =
        0.5 * (ofReal + ofImaginary) + std::hypot(0.5 * (ofReal - ofImaginary), product(a, b, components));
    found.push_back(static_cast<float>(std::sqrt(largest)));
  }
  return found;
}

}  // namespace importers::calculix
