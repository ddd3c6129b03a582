// CRC32C by carry-less multiplication, for units that are compiled once for each width of vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace odbstore {

// Like crc32c(); the processor must have the instructions.
std::uint32_t crc32cFolding256(std::span<const std::byte> bytes, std::uint32_t before);
std::uint32_t crc32cFolding512(std::span<const std::byte> bytes, std::uint32_t before);

// The factor that moves a sum on by n bits: x^n modulo the polynomial, bit-reversed and shifted up by one, because the
// product of two reversed numbers is one bit low (V. Gopal et al., "Fast CRC Computation for Generic Polynomials Using
// PCLMULQDQ Instruction", 2009).
constexpr std::int64_t foldingConstant(unsigned bits) {
  std::uint32_t power = 0x80000000U;
  for (unsigned i = 0; i < bits; ++i) power = (power >> 1U) ^ ((power & 1U) != 0 ? 0x82F63B78U : 0U);
  return static_cast<std::int64_t>(std::uint64_t{power} << 1U);
}

}  // namespace odbstore
