#include "odbstore/checksums.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <span>

#include "base/descriptor.h"
#include "hdf5/file.h"
#include "odbstore/crc32c.h"
#include "odbstore/layout.h"
#include "odbstore/store_error.h"

namespace odbstore {

namespace {

constexpr const char* kAlgorithm = "crc32c";
constexpr std::int64_t kSumBytes = sizeof(std::uint32_t);
constexpr std::int64_t kSmallestBlock = std::int64_t{4} << 10U;
constexpr std::int64_t kLargestBlock = std::int64_t{1} << 20U;
// Larger blocks would not tell the parts of a small file apart; smaller ones would make the sums of a large one many.
constexpr std::int64_t kLargeFile = std::int64_t{256} << 20U;
// More than closing the file adds to it: the description of the sums and what HDF5 had kept in memory.
constexpr std::int64_t kReserve = std::int64_t{64} << 10U;

class RawFile {
 public:
  RawFile(const std::string& path, const std::string& name, int flags)
      : name_(name), file_(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK)) {
    if (!file_) fail("cannot be opened");
    struct stat status {};
    if (::fstat(file_.get(), &status) != 0) fail("its size cannot be found out");
    size_ = status.st_size;
    ::posix_fadvise(file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  }

  std::int64_t size() const { return size_; }

  void read(std::int64_t offset, std::span<std::byte> out) const {
    const std::optional<std::size_t> got = base::readAt(file_.get(), offset, out);
    if (!got) fail(fmt::format("cannot be read at byte {}", offset));
    if (*got < out.size())
      throw StoreError(name_, "",
                       fmt::format("ends at byte {} while it is read", offset + static_cast<std::int64_t>(*got)));
  }

  void write(std::int64_t offset, std::span<const std::byte> bytes) const {
    if (!base::writeAt(file_.get(), offset, bytes)) fail("the checksums cannot be written");
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw StoreError(name_, "", fmt::format("{}: {}", what, std::strerror(errno)));
  }

  std::string name_;
  base::Descriptor file_;
  std::int64_t size_ = 0;
};

// Gives those bytes that belong to the sums the zeros that they count as. `bytes` starts at `offset`.
void blankSums(std::span<std::byte> bytes, std::int64_t offset, const ChecksumPlace& place) {
  const auto end = offset + static_cast<std::int64_t>(bytes.size());
  const std::int64_t from = std::clamp(place.offset, offset, end);
  const std::int64_t to = std::clamp(place.offset + (place.blocks + 1) * kSumBytes, offset, end);
  std::fill(bytes.begin() + (from - offset), bytes.begin() + (to - offset), std::byte{0});
}

std::vector<std::uint32_t> sumBlocks(const RawFile& file, const ChecksumPlace& place) {
  std::vector<std::uint32_t> sums;
  sums.reserve(static_cast<std::size_t>(place.blocks));
  std::vector<std::byte> buffer(static_cast<std::size_t>(kLargestBlock));
  for (std::int64_t offset = 0; offset < file.size(); offset += kLargestBlock) {
    const std::span piece(buffer.data(), static_cast<std::size_t>(std::min(kLargestBlock, file.size() - offset)));
    file.read(offset, piece);
    blankSums(piece, offset, place);
    const auto step = static_cast<std::size_t>(place.blockSize);
    for (std::size_t at = 0; at < piece.size(); at += step) {
      sums.push_back(crc32c(piece.subspan(at, std::min(step, piece.size() - at))));
    }
  }
  // What the writer had reserved too much covers nothing.
  sums.resize(static_cast<std::size_t>(place.blocks), crc32c({}));
  return sums;
}

// The sums with their own behind them, as the file has them: lowest byte first.
std::vector<std::byte> packed(std::vector<std::uint32_t> sums) {
  std::vector<std::byte> bytes;
  bytes.reserve((sums.size() + 1) * sizeof(std::uint32_t));
  const auto append = [&bytes](std::uint32_t sum) {
    for (unsigned shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::byte>(sum >> shift));
  };
  for (const std::uint32_t sum : sums) append(sum);
  append(crc32c(bytes));
  return bytes;
}

std::int64_t blocksOf(std::int64_t size, std::int64_t blockSize) { return (size + blockSize - 1) / blockSize; }

}  // namespace

ChecksumPlace reserveChecksums(const h5::Group& root) {
  const std::int64_t size = h5::sizeOfFile(root) + kReserve;
  ChecksumPlace place;
  place.blockSize = size < kLargeFile ? kSmallestBlock : kLargestBlock;
  const std::int64_t ofOthers = blocksOf(size, place.blockSize);
  place.blocks = ofOthers + blocksOf((ofOthers + 1) * kSumBytes, place.blockSize);
  const h5::Dataset sums = root.createDataset(links::kChecksums, H5T_STD_U32LE,
                                              {static_cast<hsize_t>(place.blocks) + 1}, {.reserved = true});
  sums.writeInt(attributes::kBlockSize, static_cast<int>(place.blockSize));
  sums.writeString(attributes::kAlgorithm, kAlgorithm);
  const std::optional<std::int64_t> offset = sums.offset();
  if (!offset) sums.fail("has no room in the file");
  place.offset = *offset;
  return place;
}

void fillChecksums(const std::string& path, const std::string& name, const ChecksumPlace& place) {
  const RawFile file(path, name, O_RDWR);
  if (blocksOf(file.size(), place.blockSize) > place.blocks) {
    throw StoreError(name, "", "has grown beyond its checksums while it was closed");
  }
  file.write(place.offset, packed(sumBlocks(file, place)));
}

std::optional<ChecksumPlace> findChecksums(const h5::Group& root) {
  const std::optional<h5::Dataset> sums = root.findDataset(links::kChecksums);
  if (!sums) return std::nullopt;
  const std::string algorithm = sums->stringAttribute(attributes::kAlgorithm, "");
  if (algorithm != kAlgorithm) sums->fail(fmt::format("the algorithm \"{}\" is not known", algorithm));
  ChecksumPlace place;
  place.blockSize = sums->intAttribute(attributes::kBlockSize, 0);
  if (place.blockSize < kSmallestBlock || place.blockSize > kLargestBlock ||
      !std::has_single_bit(static_cast<std::uint64_t>(place.blockSize))) {
    sums->fail(fmt::format("the block size {} is no power of two from {} to {}", place.blockSize, kSmallestBlock,
                           kLargestBlock));
  }
  const std::optional<std::int64_t> offset = sums->offset();
  if (sums->dims().size() != 1 || !sums->holds(H5T_STD_U32LE) || !offset) {
    sums->fail("must be unsigned 32-bit integers in one row, lowest byte first, in one piece");
  }
  place.offset = *offset;
  place.blocks = sums->count() - 1;
  const std::int64_t needed = blocksOf(h5::sizeOfFile(root), place.blockSize);
  if (place.blocks < needed) {
    sums->fail(fmt::format("holds the sums of {} blocks, the file has {}", place.blocks, needed));
  }
  return place;
}

ChecksumReport compareChecksums(const std::string& path, const ChecksumPlace& place) {
  const RawFile file(path, path, O_RDONLY);
  std::vector<std::byte> stored(static_cast<std::size_t>((place.blocks + 1) * kSumBytes));
  file.read(place.offset, stored);
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
