// CRC32C, the cyclic redundancy check with Castagnoli's polynomial (RFC 3720, section 12.1 and appendix B.4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace odbstore {

// The checksum of `bytes` appended to bytes with the checksum `before`; of no bytes it is 0. Thread-safe.
std::uint32_t crc32c(std::span<const std::byte> bytes, std::uint32_t before = 0);

// The implementations that this machine can run, the plain one first, the fastest last. All give the same result.
struct Crc32cVersion {
  const char* name;
  std::uint32_t (*sum)(std::span<const std::byte> bytes, std::uint32_t before);
};
std::span<const Crc32cVersion> crc32cVersions();

}  // namespace odbstore
