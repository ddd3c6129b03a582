// The catalog of a database: everything in its file except rows, labels, samples and meshes, and where those are
// stored. It is the only model of a file that the reader knows, whether it comes from the file or was made by reading
// the HDF5 structure. catalog.fbs defines its columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/numbers.h"
#include "catalog_columns.h"

namespace odbstore {

// A reference to nothing.
inline constexpr std::int32_t kNone = -1;

// An index as the columns take it.
inline flatbuffers::uoffset_t at(std::size_t index) { return static_cast<flatbuffers::uoffset_t>(index); }

// The numbers of a step's mass properties in their column: centre of mass (3) and two inertias (6 each).
inline constexpr std::size_t kMomentsOfStep = 15;

// How the slabs of an array are stored: contiguous, or as HDF5 chunks.
enum class Packing : std::uint8_t {
  contiguous = 0,
  unpacked = 1,
  gzip = 2,
  fletcher32 = 3,
  gzipFletcher32 = 4,  // the checksum covers the packed bytes
  fletcher32Gzip = 5   // the checksum is packed together with the numbers
};
inline constexpr std::uint8_t kPackings = 6;

// Entries first, first + 1, ..., end - 1 of a table or column.
struct Places {
  std::size_t first = 0;
  std::size_t end = 0;

  std::size_t size() const { return end - first; }
};

// One array of the catalog.
struct ArrayInfo {
  base::NumberFormat format = base::NumberFormat::int32;
  Packing packing = Packing::contiguous;
  std::int64_t slabs = 0;
  std::int64_t slabNumbers = 0;
  std::int64_t place = 0;

  std::int64_t numbers() const { return slabs * slabNumbers; }
  std::int64_t slabBytes() const { return slabNumbers * static_cast<std::int64_t>(base::sizeOf(format)); }
  // Whether the file holds the numbers one after the other, in this machine's format.
  bool isDirect() const;
};

// Bytes begin to end - 1 of the file.
struct Extent {
  std::int64_t begin = 0;
  std::int64_t end = 0;
};

class Catalog {
 public:
  // `bytes` come from a CatalogBuilder or a file. Throws StoreError, naming `file`, unless the columns fit each other
  // and the arrays lie within the first `arraysEnd` bytes of the file without overlapping.
  Catalog(std::vector<std::byte> bytes, const std::string& file, std::int64_t arraysEnd);

  const columns::Catalog& columns() const { return *columns_; }
  std::span<const std::byte> bytes() const { return bytes_; }

  // The text of a reference, empty for kNone. Valid as long as the catalog.
  std::string_view text(std::int32_t reference) const;
  // The list of a reference, empty for kNone.
  std::span<const std::int32_t> list(std::int32_t reference) const;
  // The texts in a list of references to texts.
  std::vector<std::string> texts(std::int32_t listReference) const;
  ArrayInfo array(std::int32_t reference) const;
  // The bytes of a slab as stored.
  Extent slab(const ArrayInfo& array, std::int64_t slab) const;
  // The checksums of the array's pieces; empty if the catalog has no sums.
  std::span<const std::uint32_t> sums(std::int32_t array) const;
  bool hasSums() const { return columns_->arrays()->sums()->size() > 0; }

  // The index of a name within a range of a column of references to texts, which is sorted by them; nothing if it is
  // not there.
  std::optional<std::size_t> find(const flatbuffers::Vector<std::int32_t>* column, Places places,
                                  std::string_view name) const;

  // The entries that belong to object i of a table, by the table's column of ends.
  static Places placesOf(const flatbuffers::Vector<std::uint32_t>* ends, std::size_t i);

  // Arrays lie within the first so many bytes of the file.
  std::int64_t arraysEnd() const { return arraysEnd_; }
  // Where the arrays are, in file order.
  const std::vector<Extent>& extents() const { return extents_; }

 private:
  std::vector<std::byte> bytes_;
  const columns::Catalog* columns_;
  std::int64_t arraysEnd_;
  std::vector<Extent> extents_;
  std::vector<std::size_t> firstSums_;  // of each array; empty without sums
};

// The form of a field in a frame.
std::int32_t formInFrame(const Catalog& catalog, std::size_t field, std::int32_t frame);
// The form that supplies what a block does not define itself: that of its first frame, or the field's own if the block
// has no frame. `list` refers to the block's frames; kNone means all frames of the step.
std::int32_t formOfBlock(const Catalog& catalog, std::size_t field, std::int32_t list);

// Checksums cover pieces: each slab as stored, cut every kPieceBytes bytes.
inline constexpr std::int64_t kPieceBytes = std::int64_t{1} << 20U;
std::int64_t piecesOf(std::int64_t storedBytes);

}  // namespace odbstore
