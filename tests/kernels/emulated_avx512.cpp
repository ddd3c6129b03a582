// What avx512vbmi2.cpp compiles, for any x86-64: vectors of 64 bytes are put together from those that the machine has,
// and the instructions called by name are replaced by what the processor's manual says of them.
#include <immintrin.h>

#include <cstring>

namespace emulated {

template <int kComparison, class Number>
bool holds(Number a, Number b) {
  static_assert(kComparison == _CMP_LT_OQ || kComparison == _CMP_GT_OQ || kComparison == _CMP_EQ_UQ);
  if (kComparison == _CMP_LT_OQ) return a < b;
  if (kComparison == _CMP_GT_OQ) return a > b;
  return a == b || a != a || b != b;
}

// VCMPPS, VCMPPD: bit i of the result is the comparison of the numbers i.
template <int kComparison, class Number, class Vector>
unsigned compare(const Vector& a, const Vector& b) {
  unsigned bits = 0;
  for (unsigned i = 0; i < sizeof(Vector) / sizeof(Number); ++i) {
    Number x;
    Number y;
    std::memcpy(&x, reinterpret_cast<const char*>(&a) + i * sizeof x, sizeof x);
    std::memcpy(&y, reinterpret_cast<const char*>(&b) + i * sizeof y, sizeof y);
    bits |= (holds<kComparison>(x, y) ? 1U : 0U) << i;
  }
  return bits;
}

// VPCOMPRESSB with zeroing: the bytes whose bit is set, from the lowest place on.
inline __m256i compress(unsigned bits, const __m256i& bytes) {
  unsigned char from[32];
  unsigned char to[32] = {};
  std::memcpy(from, &bytes, sizeof from);
  int met = 0;
  for (unsigned i = 0; i < 32; ++i) {
    if ((bits >> i & 1U) != 0) to[met++] = from[i];
  }
  __m256i compressed;
  std::memcpy(&compressed, to, sizeof to);
  return compressed;
}

}  // namespace emulated

#undef _mm512_cmp_ps_mask
#undef _mm512_cmp_pd_mask
#define _mm512_cmp_ps_mask(a, b, comparison) ::emulated::compare<comparison, float>(a, b)
#define _mm512_cmp_pd_mask(a, b, comparison) ::emulated::compare<comparison, double>(a, b)
#define _mm256_maskz_compress_epi8(bits, bytes) ::emulated::compress(bits, bytes)

#define KOLVEX_KERNELS emulated
#define KOLVEX_VECTOR_BYTES 64
#define KOLVEX_FIND_MISPLACED "kernels/find_misplaced_avx512.inc"
#include "kernels/version.inc"
