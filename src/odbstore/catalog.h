// The catalog of a database: all that its file holds but rows, labels, samples and meshes, and where those stand. It is
// the one model of a file that the reader knows, whether the file carries it or it was made by reading the structure.
// catalog.fbs has its columns.
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

// What a reference is that leads nowhere.
inline constexpr std::int32_t kNone = -1;

// How the slabs of an array are stored. All but contiguous ones are chunks of HDF5.
enum class Packing : std::uint8_t {
  contiguous = 0,
  unpacked = 1,
  gzip = 2,
  fletcher32 = 3,
  gzipFletcher32 = 4,  // the sum is of the packed bytes
  fletcher32Gzip = 5   // the sum is packed with the numbers
};
inline constexpr std::uint8_t kPackings = 6;

// Places first, first + 1, ..., end - 1 of a table or column.
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
  // Whether the numbers stand in the file one after the other as this machine holds them.
  bool isDirect() const;
};

// Bytes begin to end - 1 of the file.
struct Extent {
  std::int64_t begin = 0;
  std::int64_t end = 0;
};

class Catalog {
 public:
  // `bytes` as a program has built or a file holds them. Throws StoreError, which names `file`, unless they are columns
  // that fit each other, and arrays that lie in the first `arraysEnd` bytes of the file, none over another.
  Catalog(std::vector<std::byte> bytes, const std::string& file, std::int64_t arraysEnd);

  const columns::Catalog& columns() const { return *columns_; }
  std::span<const std::byte> bytes() const { return bytes_; }

  // The text of a reference, empty for none. Good as long as the catalog.
  std::string_view text(std::int32_t reference) const;
  // The list of a reference, empty for none.
  std::span<const std::int32_t> list(std::int32_t reference) const;
  // The texts of a list of them.
  std::vector<std::string> texts(std::int32_t listReference) const;
  ArrayInfo array(std::int32_t reference) const;
  // The bytes of a slab as it is stored.
  Extent slab(const ArrayInfo& array, std::int64_t slab) const;
  // The sums of the array's pieces, empty without sums.
  std::span<const std::uint32_t> sums(std::int32_t array) const;
  bool hasSums() const { return columns_->arrays()->sums()->size() > 0; }

  // The place of a name in a part of a column of texts that is ascending by them; nothing when it is not there.
  std::optional<std::size_t> find(const flatbuffers::Vector<std::int32_t>* column, Places places,
                                  std::string_view name) const;

  // What belongs to object i of a table, by the table's column of ends.
  static Places placesOf(const flatbuffers::Vector<std::uint32_t>* ends, std::size_t i);

  // The bytes of the file among which arrays may stand, from its first one on.
  std::int64_t arraysEnd() const { return arraysEnd_; }
  // Where arrays stand, in the order of the file.
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
// The form from which a block whose frames are those of the list (none: all of the step) takes what it does not say
// itself: the one of its first frame, the field's own where it has no frame.
std::int32_t formOfBlock(const Catalog& catalog, std::size_t field, std::int32_t list);

// Sums are of pieces: of each slab as it is stored, cut at every so many bytes.
inline constexpr std::int64_t kPieceBytes = std::int64_t{1} << 20U;
std::int64_t piecesOf(std::int64_t storedBytes);

}  // namespace odbstore
