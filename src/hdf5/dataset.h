// Data sets: their shapes, their numbers, and where those are in the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "hdf5/object.h"

namespace h5 {

using Dims = std::vector<hsize_t>;

// What HDF5 does to a chunk before it stores it.
enum class Filter { gzip, fletcher32 };

// How the numbers of a new data set are laid out.
struct Storage {
  std::vector<Filter> filters;  // in the order in which they are applied; a chunk for each slab where there are any
  bool reserved = false;        // allocated at once; written by another part of the program
};

// A chunk as stored.
struct Chunk {
  std::int64_t offset = 0;
  std::int64_t bytes = 0;
};

class Dataset : public Object {
 public:
  Dataset(Handle id, std::string path, std::shared_ptr<const FileContext> file);

  const Dims& dims() const { return dims_; }
  // Number of numbers in all, checked against what the file can hold.
  std::int64_t count() const;
  std::int64_t bytes() const;
  bool isFloat() const { return class_ == H5T_FLOAT; }
  bool isInteger() const { return class_ == H5T_INTEGER; }
  // How a number is stored; nothing for texts, and for numbers of other formats than those of base/numbers.h.
  std::optional<base::NumberFormat> format() const;
  // Bytes of one number as stored.
  std::size_t numberSize() const { return numberSize_; }

  // The whole content, converted by HDF5. readInts fails on a number outside of int32.
  std::vector<int> readInts() const;
  std::vector<std::int64_t> readLongs() const;
  std::vector<float> readFloats() const;
  std::vector<double> readDoubles() const;
  std::vector<std::string> readStrings() const;

  // Where in the file contiguous numbers start; nothing if they are not contiguous or have no room yet.
  std::optional<std::int64_t> offset() const;
  // Whether it is divided into chunks. Of the strict profile each is a slab along the first dimension, and filters()
  // and chunks() describe them; an unfiltered data set has no filters.
  bool isChunked() const;
  std::vector<Filter> filters() const;
  // By slab. Fails where one is not stored, or was stored without the filters.
  std::vector<Chunk> chunks() const;

  // All numbers, which are of that format or type in memory.
  void write(const void* numbers, base::NumberFormat format) const;
  void write(const void* numbers, hid_t memoryType) const;
  // A slab of a chunked data set, filtered already.
  void writeChunk(hsize_t slab, std::span<const std::byte> bytes) const;

 private:
  void readShape(hid_t space);
  void checkType(hid_t type) const;
  void checkStorage() const;
  void checkStrict(hid_t type) const;
  void checkContiguous(std::int64_t start) const;
  void checkChunked(hid_t plist) const;
  void requireFloat() const;
  void readAll(hid_t memoryType, void* out) const;
  template <class Number>
  std::vector<Number> readWide() const;

  Dims dims_;
  H5T_class_t class_ = H5T_NO_CLASS;
  std::size_t numberSize_ = 0;
};

}  // namespace h5
