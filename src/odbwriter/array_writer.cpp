#include "odbwriter/array_writer.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "base/descriptor.h"
#include "hdf5/file.h"
#include "odbstore/crc32c.h"
#include "odbstore/store_error.h"
#include "odbstore/unpack.h"

namespace odbstore {

namespace {

std::vector<std::uint32_t> sumsOf(std::span<const std::byte> bytes) {
  std::vector<std::uint32_t> sums;
  constexpr auto piece = static_cast<std::size_t>(kPieceBytes);
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    sums.push_back(crc32c(bytes.subspan(at, std::min(piece, bytes.size() - at))));
  }
  return sums;
}

// Whether the file has these bytes there; a few are enough to tell that they are there at all.
bool startsWith(int file, std::int64_t offset, std::span<const std::byte> bytes) {
  std::array<std::byte, 64> found{};
  const std::size_t count = std::min(found.size(), bytes.size());
  return base::readAt(file, offset, std::span(found).first(count)) == count &&
         std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count), found.begin());
}

}  // namespace

std::size_t ArrayWriter::addContiguous(base::NumberFormat format, std::int64_t slabs, std::int64_t slabNumbers,
                                       std::int64_t offset) {
  WrittenArray array;
  array.format = format;
  array.slabs = slabs;
  array.slabNumbers = slabNumbers;
  array.offset = offset;
  const auto expected = static_cast<std::size_t>(slabNumbers == 0 ? 0 : slabs);
  array.isWritten.assign(expected, 0);
  array.sums.resize(expected);
  array.left = static_cast<std::int64_t>(expected);
  arrays_.push_back(std::move(array));
  return arrays_.size() - 1;
}

std::size_t ArrayWriter::addPacked(h5::Dataset dataset, base::NumberFormat format, Packing packing, std::int64_t slabs,
                                   std::int64_t slabNumbers) {
  const std::size_t place = addContiguous(format, slabs, slabNumbers, 0);
  WrittenArray& array = arrays_[place];
  // Without numbers there are no chunks.
  if (array.left == 0) return place;
  array.packing = packing;
  array.packed = std::move(dataset);
  array.chunks.resize(static_cast<std::size_t>(slabs));
  return place;
}

bool ArrayWriter::isWritten(std::size_t array, std::int64_t slab) const {
  return arrays_[array].isWritten[static_cast<std::size_t>(slab)] != 0;
}

bool ArrayWriter::holds(std::size_t place, std::span<const std::byte> bytes) const {
  const WrittenArray& array = arrays_[place];
  if (static_cast<std::int64_t>(bytes.size()) != array.slabBytes()) return false;
  std::vector<std::byte> found(std::min(bytes.size(), static_cast<std::size_t>(kPieceBytes)));
  for (std::size_t at = 0; at < bytes.size(); at += found.size()) {
    const std::span piece = std::span(found).first(std::min(found.size(), bytes.size() - at));
    const bool isRead = base::readAt(file_, array.offset + static_cast<std::int64_t>(at), piece) == piece.size();
    if (!isRead || std::memcmp(piece.data(), bytes.data() + at, piece.size()) != 0) return false;
  }
  return true;
}

void ArrayWriter::write(std::size_t place, std::int64_t slab, std::span<const std::byte> bytes,
                        const ObjectName& object) {
  if (bytes.empty()) return;
  WrittenArray& array = arrays_[place];
  const auto at = static_cast<std::size_t>(slab);
  if (array.packed) {
    writeChunk(array, slab, bytes, object);
  } else {
    array.sums[at] = writeAndSum(array.offset + slab * array.slabBytes(), bytes, object);
  }
  array.isWritten[at] = 1;
  --array.left;
}

// Piece by piece, so that a piece is still in the cache when it is written.
std::vector<std::uint32_t> ArrayWriter::writeAndSum(std::int64_t offset, std::span<const std::byte> bytes,
                                                    const ObjectName& object) const {
  std::vector<std::uint32_t> sums;
  while (!bytes.empty()) {
    const std::span piece = bytes.first(std::min(static_cast<std::size_t>(kPieceBytes), bytes.size()));
    sums.push_back(crc32c(piece));
    if (!base::writeAt(file_, offset, piece)) {
      throw StoreError(name_, object(), fmt::format("cannot be written ({})", std::strerror(errno)));
    }
    offset += static_cast<std::int64_t>(piece.size());
    bytes = bytes.subspan(piece.size());
  }
  return sums;
}

void ArrayWriter::writeChunk(WrittenArray& array, std::int64_t slab, std::span<const std::byte> bytes,
                             const ObjectName& object) {
  pack(bytes, array.packing, chunk_);
  array.packed->writeChunk(static_cast<hsize_t>(slab), chunk_);
  // HDF5 puts a chunk at the end of the file.
  const std::int64_t end = h5::endOfFile(*array.packed);
  const std::int64_t begin = end - static_cast<std::int64_t>(chunk_.size());
  if (!startsWith(file_, begin, chunk_))
    throw StoreError(name_, object(), "HDF5 stored a frame at an unexpected position");
  array.chunks[static_cast<std::size_t>(slab)] = {begin, end};
  array.sums[static_cast<std::size_t>(slab)] = sumsOf(chunk_);
}

void ArrayWriter::close() {
  for (WrittenArray& array : arrays_) array.packed.reset();
}

void ArrayWriter::describe(CatalogBuilder& catalog) const {
  std::vector<std::uint32_t> sums;
  for (const WrittenArray& array : arrays_) {
    if (array.packing == Packing::contiguous) {
      catalog.addArray(array.format, array.slabs, array.slabNumbers, array.offset);
    } else {
      catalog.addPackedArray(array.format, array.packing, array.slabs, array.slabNumbers, array.chunks);
    }
    for (const std::vector<std::uint32_t>& ofSlab : array.sums) sums.insert(sums.end(), ofSlab.begin(), ofSlab.end());
  }
  catalog.setSums(std::move(sums));
}

}  // namespace odbstore
