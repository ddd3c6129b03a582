#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace odbstore {

namespace {

using Vector = __m512i;

inline Vector load(const std::byte* from) { return _mm512_loadu_si512(from); }
inline Vector everywhere(std::int64_t high, std::int64_t low) {
  return _mm512_set_epi64(high, low, high, low, high, low, high, low);
}
inline Vector firstXored(Vector vector, std::uint32_t sum) {
  return _mm512_xor_si512(vector, _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(sum))));
}
inline Vector folded(Vector vector, Vector factors, Vector next) {
  const Vector low = _mm512_clmulepi64_epi128(vector, factors, 0x00);
  const Vector high = _mm512_clmulepi64_epi128(vector, factors, 0x11);
  return _mm512_ternarylogic_epi64(low, high, next, 0x96);  // all three xored
}

}  // namespace

}  // namespace odbstore

#include "odbstore/crc32c_folding.inc"

namespace odbstore {

std::uint32_t crc32cFolding512(std::span<const std::byte> bytes, std::uint32_t before) {
  return sumByFolding(bytes, before);
}

}  // namespace odbstore
