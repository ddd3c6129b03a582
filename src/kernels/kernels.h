// The inner loops over rows of numbers, in versions for the vector units that the machine may have.
//
// Every version gives the same result to the bit as the plain loop that its comment describes: comparisons are strict,
// so that NaN never replaces anything and of equal zeros the first one met stays; sums and products are evaluated in
// the order written, without fused multiply-adds. docs/kernels.md explains how.
#pragma once

#include <cstddef>
#include <span>

namespace kernels {

// The largest and smallest of 0.5 (d1^2 + d2^2 + d3^2) + 3 (s12^2 + s13^2 + s23^2) over tensors, the square of the
// equivalent stress, in double. Rounding and the square root keep the order, so the extremes of the equivalent stress
// are those of its square. As they start, no tensor has been seen.
struct EquivalentRange {
  double largest = -1.0;
  double smallest = __builtin_inf();
};

// Where the invariants of rows go, [count] each. They are computed in double and rounded once to float. Where a
// component is not finite, the principal values, tresca and inv3 are NaN.
struct InvariantColumns {
  float* tresca;        // the largest minus the smallest principal value
  float* press;         // the hydrostatic pressure, -(s11 + s22 + s33)/3
  float* inv3;          // cbrt(27/2 det dev s), +mises in uniaxial tension
  float* maxPrincipal;  // the eigenvalues
  float* midPrincipal;
  float* minPrincipal;
  float* maxInPlanePrincipal;  // c + r and c - r with c = (s11 + s22)/2, r = sqrt(((s11 - s22)/2)^2 + s12^2)
  float* minInPlanePrincipal;
  float* outOfPlanePrincipal;  // s33
};

inline constexpr int kTensorWidth = 6;

// What a full sort puts first: smaller numbers, or larger ones.
enum class Order { ascending, descending };

// All rows are contiguous, [count, width], width at least 1; pointers need no alignment.
struct Kernels {
  const char* name;

  // for each row, for each column c: if (x > max[c]) max[c] = x; if (x < min[c]) min[c] = x;
  // `max` and `min` hold `width` running values.
  void (*columnExtremesFloat)(const float* rows, std::size_t count, int width, float* max, float* min);
  void (*columnExtremesDouble)(const double* rows, std::size_t count, int width, double* max, double* min);

  // The same for the length of each row: sum = 0; sum += x * x for each column; sqrt(sum), all in the rows' precision.
  void (*lengthExtremesFloat)(const float* rows, std::size_t count, int width, float* max, float* min);
  void (*lengthExtremesDouble)(const double* rows, std::size_t count, int width, double* max, double* min);
  // The lengths themselves, one per row.
  void (*lengthsFloat)(const float* rows, std::size_t count, int width, float* out);
  void (*lengthsDouble)(const double* rows, std::size_t count, int width, double* out);

  // The first `columnCount` numbers of each row, at most `width`: number c of row i goes to columns[c][at + i].
  void (*splitColumnsFloat)(const float* rows, std::size_t count, int width, float* const* columns, int columnCount,
                            std::size_t at);
  void (*splitColumnsDouble)(const double* rows, std::size_t count, int width, double* const* columns, int columnCount,
                             std::size_t at);

  // Rows are tensors, components 11, 22, 33, 12, 13, 23 up to `width`; those that are missing count as 0, what follows
  // them is passed over. With `halvedShear` the last three are halved first.
  void (*equivalentRange)(const float* rows, std::size_t count, int width, bool halvedShear, EquivalentRange* range);
  // The equivalent stress of each row: the root of that square, rounded to float.
  void (*equivalents)(const float* rows, std::size_t count, int width, bool halvedShear, float* out);

  // All other invariants of each row.
  void (*invariantsFloat)(const float* rows, std::size_t count, int width, bool halvedShear, InvariantColumns* out);
  void (*invariantsDouble)(const double* rows, std::size_t count, int width, bool halvedShear, InvariantColumns* out);

  // Reorders `count` values, so that position `target`, up to `count`, holds what a full sort would put there, nothing
  // before it belongs after it and nothing after it belongs before it. Every value moves as in the plain loops of
  // selection.inc, with NaN among them too: where the others come to stand is part of the result.
  void (*selectFloat)(float* values, std::size_t count, std::size_t target, Order order);
  void (*selectDouble)(double* values, std::size_t count, std::size_t target, Order order);
};

// The fastest version that this machine can run, found once.
const Kernels& best();

// Those of the best version that exist in both precisions, by the precision of their rows.
inline void columnExtremes(const float* rows, std::size_t count, int width, float* max, float* min) {
  best().columnExtremesFloat(rows, count, width, max, min);
}
inline void columnExtremes(const double* rows, std::size_t count, int width, double* max, double* min) {
  best().columnExtremesDouble(rows, count, width, max, min);
}
inline void lengthExtremes(const float* rows, std::size_t count, int width, float* max, float* min) {
  best().lengthExtremesFloat(rows, count, width, max, min);
}
inline void lengthExtremes(const double* rows, std::size_t count, int width, double* max, double* min) {
  best().lengthExtremesDouble(rows, count, width, max, min);
}
inline void lengths(const float* rows, std::size_t count, int width, float* out) {
  best().lengthsFloat(rows, count, width, out);
}
inline void lengths(const double* rows, std::size_t count, int width, double* out) {
  best().lengthsDouble(rows, count, width, out);
}
inline void splitColumns(const float* rows, std::size_t count, int width, float* const* columns, int columnCount,
                         std::size_t at) {
  best().splitColumnsFloat(rows, count, width, columns, columnCount, at);
}
inline void splitColumns(const double* rows, std::size_t count, int width, double* const* columns, int columnCount,
                         std::size_t at) {
  best().splitColumnsDouble(rows, count, width, columns, columnCount, at);
}
inline void invariants(const float* rows, std::size_t count, int width, bool halvedShear, InvariantColumns* out) {
  best().invariantsFloat(rows, count, width, halvedShear, out);
}
inline void invariants(const double* rows, std::size_t count, int width, bool halvedShear, InvariantColumns* out) {
  best().invariantsDouble(rows, count, width, halvedShear, out);
}

inline void select(std::span<float> values, std::size_t target, Order order) {
  best().selectFloat(values.data(), values.size(), target, order);
}
inline void select(std::span<double> values, std::size_t target, Order order) {
  best().selectDouble(values.data(), values.size(), target, order);
}

// All versions that it can run, the plain one first.
std::span<const Kernels* const> runnable();

}  // namespace kernels
