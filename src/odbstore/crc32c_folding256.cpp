#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace odbstore {

namespace {

using Vector = __m256i;

inline Vector load(const std::byte* from) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
inline Vector everywhere(std::int64_t high, std::int64_t low) { return _mm256_set_epi64x(high, low, high, low); }
inline Vector firstXored(Vector vector, std::uint32_t sum) {
  return _mm256_xor_si256(vector, _mm256_zextsi128_si256(_mm_cvtsi32_si128(static_cast<int>(sum))));
}
inline Vector folded(Vector vector, Vector factors, Vector next) {
  const Vector low = _mm256_clmulepi64_epi128(vector, factors, 0x00);
  const Vector high = _mm256_clmulepi64_epi128(vector, factors, 0x11);
  return _mm256_xor_si256(_mm256_xor_si256(low, high), next);
}

}  // namespace

}  // namespace odbstore

#include "odbstore/crc32c_folding.inc"

namespace odbstore {

std::uint32_t crc32cFolding256(std::span<const std::byte> bytes, std::uint32_t before) {
  return sumByFolding(bytes, before);
}

}  // namespace odbstore
