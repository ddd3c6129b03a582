#include "odbstore/crc32c.h"

#include <array>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <nmmintrin.h>

#include "odbstore/crc32c_folding.h"
#elif defined(__aarch64__)
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

namespace odbstore {

namespace {

// The polynomial with its bits reversed: the check takes the lowest bit first.
constexpr std::uint32_t kPolynomial = 0x82F63B78U;

// One table per byte of a word: what the byte contributes after the bytes that follow it in the word.
using Tables = std::array<std::array<std::uint32_t, 256>, 8>;

constexpr Tables makeTables() {
  Tables tables{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t sum = i;
    for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? kPolynomial : 0U);
    tables[0][i] = sum;
  }
  for (std::size_t k = 1; k < tables.size(); ++k) {
    for (std::size_t i = 0; i < 256; ++i) {
      tables[k][i] = (tables[k - 1][i] >> 8U) ^ tables[0][tables[k - 1][i] & 0xFFU];
    }
  }
  return tables;
}

constexpr Tables kTables = makeTables();

std::uint64_t wordAt(const std::byte* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof(word));
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  return word;
}

std::uint32_t takeByte(std::uint32_t sum, std::byte byte) {
  return (sum >> 8U) ^ kTables[0][(sum ^ static_cast<std::uint32_t>(byte)) & 0xFFU];
}

// Eight bytes at a time by tables (M. E. Kounavis and F. L. Berry, 2005).
std::uint32_t sumByTables(std::span<const std::byte> bytes, std::uint32_t before) {
  std::uint32_t sum = ~before;
  const std::byte* at = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t), at += sizeof(std::uint64_t)) {
    const std::uint64_t word = wordAt(at) ^ sum;
    sum = 0;
    for (std::size_t i = 0; i < kTables.size(); ++i) sum ^= kTables[7 - i][(word >> (8 * i)) & 0xFFU];
  }
  for (; left > 0; --left, ++at) sum = takeByte(sum, *at);
  return ~sum;
}

#if defined(__x86_64__) || defined(__aarch64__)

#if defined(__x86_64__)
#define KOLVEX_CRC_TARGET __attribute__((target("sse4.2")))
KOLVEX_CRC_TARGET inline std::uint32_t takeWord(std::uint32_t sum, std::uint64_t word) {
  return static_cast<std::uint32_t>(_mm_crc32_u64(sum, word));
}
bool hasInstruction() { return __builtin_cpu_supports("sse4.2") != 0; }
constexpr const char* kInstructionName = "sse4.2";
#else
#define KOLVEX_CRC_TARGET
// The compiler's header offers the instruction only to units that are compiled for it as a whole.
inline std::uint32_t takeWord(std::uint32_t sum, std::uint64_t word) {
  __asm__(".arch_extension crc\n\tcrc32cx %w0, %w0, %x1" : "+r"(sum) : "r"(word));
  return sum;
}
bool hasInstruction() { return (getauxval(AT_HWCAP) & HWCAP_CRC32) != 0; }
constexpr const char* kInstructionName = "crc";
#endif

// The instruction has a latency of three cycles and can start in each, so three stretches are summed in parallel. Three
// of them cover a block of 4 KiB except two words.
constexpr std::size_t kLaneBytes = 1360;

// What each byte of a sum becomes after a stretch of so many zeros. It joins the sums of neighbouring stretches,
// because the check is linear.
using Shift = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr Shift makeShift() {
  // First for each bit; a byte is the sum of its bits.
  std::array<std::uint32_t, 32> ofBit{};
  for (std::uint32_t bit = 0; bit < 32; ++bit) {
    std::uint32_t sum = 1U << bit;
    for (std::size_t n = 0; n < kLaneBytes; ++n) sum = (sum >> 8U) ^ kTables[0][sum & 0xFFU];
    ofBit[bit] = sum;
  }
  Shift shift{};
  for (std::uint32_t k = 0; k < shift.size(); ++k) {
    for (std::uint32_t i = 0; i < 256; ++i) {
      for (std::uint32_t bit = 0; bit < 8; ++bit) shift[k][i] ^= (i >> bit & 1U) != 0 ? ofBit[8 * k + bit] : 0U;
    }
  }
  return shift;
}

// Computed at compile time: it would take longer than everything else in a small run.
constexpr Shift kShift = makeShift();

std::uint32_t shifted(std::uint32_t sum) {
  return kShift[0][sum & 0xFFU] ^ kShift[1][(sum >> 8U) & 0xFFU] ^ kShift[2][(sum >> 16U) & 0xFFU] ^
         kShift[3][sum >> 24U];
}

KOLVEX_CRC_TARGET std::uint32_t sumByInstruction(std::span<const std::byte> bytes, std::uint32_t before) {
  std::uint32_t sum = ~before;
  const std::byte* at = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= 3 * kLaneBytes; left -= 3 * kLaneBytes, at += 3 * kLaneBytes) {
    std::uint32_t second = 0;
    std::uint32_t third = 0;
    for (std::size_t i = 0; i < kLaneBytes; i += sizeof(std::uint64_t)) {
      sum = takeWord(sum, wordAt(at + i));
      second = takeWord(second, wordAt(at + kLaneBytes + i));
      third = takeWord(third, wordAt(at + 2 * kLaneBytes + i));
    }
    sum = shifted(shifted(sum) ^ second) ^ third;
  }
  for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t), at += sizeof(std::uint64_t)) {
    sum = takeWord(sum, wordAt(at));
  }
  for (; left > 0; --left, ++at) sum = takeByte(sum, *at);
  return ~sum;
}

#endif

struct Versions {
  std::array<Crc32cVersion, 4> found{};
  std::size_t count = 0;
};

Versions findVersions() {
  Versions versions;
  versions.found[versions.count++] = {"tables", sumByTables};
#if defined(__x86_64__) || defined(__aarch64__)
  if (hasInstruction()) versions.found[versions.count++] = {kInstructionName, sumByInstruction};
#endif
#if defined(__x86_64__)
  if (hasInstruction() && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("vpclmulqdq")) {
    versions.found[versions.count++] = {"folding256", crc32cFolding256};
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl")) {
      versions.found[versions.count++] = {"folding512", crc32cFolding512};
    }
  }
#endif
  return versions;
}

}  // namespace

std::span<const Crc32cVersion> crc32cVersions() {
  static const Versions versions = findVersions();
  return {versions.found.data(), versions.count};
}

std::uint32_t crc32c(std::span<const std::byte> bytes, std::uint32_t before) {
  return crc32cVersions().back().sum(bytes, before);
}

}  // namespace odbstore
