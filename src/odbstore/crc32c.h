// CRC32C, the cyclic redundancy check with Castagnoli's polynomial (RFC 3720, section 12.1 and appendix B.4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace odbstore {

// The sum of `bytes` behind those whose sum is `before`; of nothing it is 0. Any number of threads may call it.
std::uint32_t crc32c(std::span<const std::byte> bytes, std::uint32_t before = 0);

// The ways to compute it that this machine can run, the plain one first, the fastest last. All give the same.
struct Crc32cVersion {
  const char* name;
  std::uint32_t (*sum)(std::span<const std::byte> bytes, std::uint32_t before);
};
std::span<const Crc32cVersion> crc32cVersions();

}  // namespace odbstore
