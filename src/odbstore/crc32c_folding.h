// CRC32C by carry-less multiplication, for units that are compiled once for each width of vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace odbstore {

// As crc32c(); only where the processor has the instructions.
std::uint32_t crc32cFolding256(std::span<const std::byte> bytes, std::uint32_t before);
std::uint32_t crc32cFolding512(std::span<const std::byte> bytes, std::uint32_t before);

// What a sum is multiplied with that moves on by so many bits: x^n modulo the polynomial, its bits in reverse and one
// place up, as the product of two reversed numbers lies one place low (V. Gopal et al., "Fast CRC Computation for
// Generic Polynomials Using PCLMULQDQ Instruction", 2009).
constexpr std::int64_t foldingConstant(unsigned bits) {
  std::uint32_t power = 0x80000000U;
  for (unsigned i = 0; i < bits; ++i) power = (power >> 1U) ^ ((power & 1U) != 0 ? 0x82F63B78U : 0U);
  return static_cast<std::int64_t>(std::uint64_t{power} << 1U);
}

}  // namespace odbstore
