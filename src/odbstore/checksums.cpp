#include "odbstore/checksums.h"

#include <fmt/core.h>

#include <algorithm>
#include <bit>
#include <span>

#include "odbstore/crc32c.h"
#include "odbstore/database_file.h"
#include "odbstore/layout.h"
#include "odbstore/store_error.h"

namespace odbstore {

namespace {

constexpr std::int64_t kSumBytes = sizeof(std::uint32_t);
constexpr std::int64_t kSmallestBlock = std::int64_t{4} << 10U;
constexpr std::int64_t kLargestBlock = std::int64_t{1} << 20U;

// The bytes of the sums themselves count as zeros. `bytes` starts at `offset`.
void blankSums(std::span<std::byte> bytes, std::int64_t offset, const ChecksumPlace& place) {
  const auto end = offset + static_cast<std::int64_t>(bytes.size());
  const std::int64_t from = std::clamp(place.offset, offset, end);
  const std::int64_t to = std::clamp(place.offset + (place.blocks + 1) * kSumBytes, offset, end);
  std::fill(bytes.begin() + (from - offset), bytes.begin() + (to - offset), std::byte{0});
}

std::string nameOfSums() { return std::string("/") + links::kChecksums; }

std::vector<std::uint32_t> sumBlocks(const DatabaseFile& file, const ChecksumPlace& place) {
  std::vector<std::uint32_t> sums;
  sums.reserve(static_cast<std::size_t>(place.blocks));
  std::vector<std::byte> buffer(static_cast<std::size_t>(kLargestBlock));
  for (std::int64_t offset = 0; offset < file.size(); offset += kLargestBlock) {
    const std::span piece(buffer.data(), static_cast<std::size_t>(std::min(kLargestBlock, file.size() - offset)));
    file.read(offset, piece, [] { return std::string(); });
    blankSums(piece, offset, place);
    const auto step = static_cast<std::size_t>(place.blockSize);
    for (std::size_t at = 0; at < piece.size(); at += step) {
      sums.push_back(crc32c(piece.subspan(at, std::min(step, piece.size() - at))));
    }
  }
  // Sums that the writer reserved and did not need cover nothing.
  sums.resize(static_cast<std::size_t>(place.blocks), crc32c({}));
  return sums;
}

std::int64_t blocksOf(std::int64_t size, std::int64_t blockSize) { return (size + blockSize - 1) / blockSize; }

}  // namespace

std::optional<ChecksumPlace> findChecksums(const columns::Catalog& catalog, std::int64_t bytes,
                                           const std::string& file) {
  if (catalog.checksumsOffset() == kNone) return std::nullopt;
  const auto fail = [&](const std::string& reason) { throw StoreError(file, nameOfSums(), reason); };
  const ChecksumPlace place{catalog.checksumsOffset(), catalog.checksumsCount() - 1, catalog.checksumsBlock()};
  if (place.blockSize < kSmallestBlock || place.blockSize > kLargestBlock ||
      !std::has_single_bit(static_cast<std::uint64_t>(place.blockSize))) {
    fail(fmt::format("the block size {} is not a power of two from {} to {}", place.blockSize, kSmallestBlock,
                     kLargestBlock));
  }
  const std::int64_t needed = blocksOf(bytes, place.blockSize);
  if (place.blocks < needed) fail(fmt::format("holds the sums of {} blocks, the file has {}", place.blocks, needed));
  if (place.offset < 0 || place.blocks >= bytes / kSumBytes || place.offset > bytes - (place.blocks + 1) * kSumBytes) {
    fail("reaches beyond the end of the file");
  }
  return place;
}

ChecksumReport compareChecksums(const DatabaseFile& file, const ChecksumPlace& place) {
  std::vector<std::byte> stored(static_cast<std::size_t>((place.blocks + 1) * kSumBytes));
  file.read(place.offset, stored, nameOfSums);
  const auto sumAt = [&stored](std::size_t index) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < 4; ++i) sum |= static_cast<std::uint32_t>(stored[4 * index + i]) << (8 * i);
    return sum;
  };
  ChecksumReport report;
  const std::span sums = std::span(stored).first(stored.size() - kSumBytes);
  report.tableIsDamaged = crc32c(sums) != sumAt(static_cast<std::size_t>(place.blocks));
  if (report.tableIsDamaged) return report;
  const std::vector<std::uint32_t> found = sumBlocks(file, place);
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] != sumAt(i)) report.damagedBlocks.push_back(static_cast<std::int64_t>(i));
  }
  return report;
}

}  // namespace odbstore
