// Data sets: their shapes, their numbers, and where those stand in the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hdf5/object.h"

namespace h5 {

using Dims = std::vector<hsize_t>;

// How the numbers of a new data set are laid out.
struct Storage {
  bool gzip = false;
  bool fletcher32 = false;
  bool reserved = false;  // their room in the file is taken at once; somebody else fills it

  bool chunked() const { return gzip || fletcher32; }
};

// Bytes of a file that hold slabs of a data set, one after the other along its first dimension.
struct Stretch {
  std::int64_t offset = 0;
  std::int64_t bytes = 0;
  std::int64_t firstSlab = 0;
  std::int64_t slabBytes = 0;  // of each; what is packed has one slab in a stretch
};

class Dataset : public Object {
 public:
  Dataset(Handle id, std::string path, std::shared_ptr<const FileContext> file);

  const Dims& dims() const { return dims_; }
  // Number of numbers in all, checked against what the file can hold.
  std::int64_t count() const;
  bool isFloat() const { return class_ == H5T_FLOAT; }
  bool isInteger() const { return class_ == H5T_INTEGER; }
  // Whether the numbers have that very type in the file.
  bool holds(hid_t type) const;
  // Bytes of one number as stored.
  std::size_t numberSize() const { return numberSize_; }

  // The whole content. readInts fails on a number outside of int32.
  std::vector<int> readInts() const;
  std::vector<float> readFloats() const;
  std::vector<double> readDoubles() const;
  std::vector<std::string> readStrings() const;

  // Slab `index` along the first dimension into `out`, which has room for it.
  void readSlab(hsize_t index, float* out) const;
  void readSlab(hsize_t index, double* out) const;

  // Whether the numbers stand in the file one after the other as this machine holds them, so that readDirect() can take
  // them from there.
  bool isDirect() const { return direct_.has_value(); }
  // Where in the file contiguous numbers start; nothing where they are not contiguous or have no room yet.
  std::optional<std::int64_t> offset() const;
  // All of it, slab by slab where it is chunked. Of the strict profile only.
  std::vector<Stretch> stretches() const;
  // Numbers `first` to `first + count - 1` of the whole data set into `out`, without HDF5; isDirect() must hold.
  // Threads may call it at the same time.
  void readDirect(std::int64_t first, std::int64_t count, void* out) const;
  void writeSlab(hsize_t index, const float* rows) const;
  void writeSlab(hsize_t index, const double* rows) const;

  // All numbers, of the type that the data set was created with.
  void write(const void* numbers, hid_t memoryType) const;

 private:
  // Where in which open file the numbers stand.
  struct Direct {
    int file;
    std::int64_t offset;
  };

  void readShape(hid_t space);
  void checkType(hid_t type) const;
  void checkProfile(hid_t type) const;
  void checkContiguous(std::int64_t start) const;
  void checkChunked(hid_t plist) const;
  std::int64_t bytes() const;
  std::optional<Direct> findDirect(hid_t type) const;
  void transferSlab(hsize_t index, hid_t memoryType, void* out, bool writing) const;
  void requireFloat() const;
  void readAll(hid_t memoryType, void* out) const;

  Dims dims_;
  H5T_class_t class_ = H5T_NO_CLASS;
  std::size_t numberSize_ = 0;
  std::optional<Direct> direct_;
};

}  // namespace h5
