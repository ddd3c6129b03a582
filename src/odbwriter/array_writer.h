// Writes the numbers of a file under construction to their positions and computes their checksums. Internal to the
// writer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "hdf5/dataset.h"
#include "odbstore/catalog.h"
#include "odbstore/catalog_builder.h"

namespace odbstore {

using ObjectName = std::function<std::string()>;

// One array: slabs of the same size, each of which is to be written once.
struct WrittenArray {
  base::NumberFormat format = base::NumberFormat::int32;
  std::int64_t slabs = 0;
  std::int64_t slabNumbers = 0;
  std::int64_t offset = 0;  // of contiguous ones
  Packing packing = Packing::contiguous;
  std::optional<h5::Dataset> packed;             // open as long as chunks of it come
  std::vector<Extent> chunks;                    // of packed ones, by slab
  std::vector<char> isWritten;                   // by slab
  std::vector<std::vector<std::uint32_t>> sums;  // by slab
  std::int64_t left = 0;                         // slabs not yet written

  std::int64_t slabBytes() const { return slabNumbers * static_cast<std::int64_t>(base::sizeOf(format)); }
};

class ArrayWriter {
 public:
  // `file` is open for writing; `name` goes into messages.
  ArrayWriter(int file, std::string name) : file_(file), name_(std::move(name)) {}

  // Returns the index of the array. Slabs without numbers need not be written.
  std::size_t addContiguous(base::NumberFormat format, std::int64_t slabs, std::int64_t slabNumbers,
                            std::int64_t offset);
  std::size_t addPacked(h5::Dataset dataset, base::NumberFormat format, Packing packing, std::int64_t slabs,
                        std::int64_t slabNumbers);

  // Writes a slab that has not been written yet. Throws StoreError of the object.
  void write(std::size_t array, std::int64_t slab, std::span<const std::byte> bytes, const ObjectName& object);
  bool isWritten(std::size_t array, std::int64_t slab) const;
  // Whether the file has just these bytes for a contiguous array of one slab.
  bool holds(std::size_t array, std::span<const std::byte> bytes) const;
  const WrittenArray& at(std::size_t array) const { return arrays_[array]; }

  // Closes the data sets of packed arrays.
  void close();
  // Adds all arrays to a catalog, by their places, and their sums.
  void describe(CatalogBuilder& catalog) const;

 private:
  std::vector<std::uint32_t> writeAndSum(std::int64_t offset, std::span<const std::byte> bytes,
                                         const ObjectName& object) const;
  void writeChunk(WrittenArray& array, std::int64_t slab, std::span<const std::byte> bytes, const ObjectName& object);

  int file_;
  std::string name_;
  std::vector<WrittenArray> arrays_;
  std::vector<std::byte> chunk_;
};

}  // namespace odbstore
