// An open database: its file and its catalog.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "odbstore/catalog.h"

namespace odbstore {

// The name of an object in messages; called only when there is a message.
using ObjectName = std::function<std::string()>;

class DatabaseFile {
 public:
  // Opens the database at `path`, called `name` in messages. Null for an older layout, which must be upgraded first.
  // The catalog of a file without a valid one of its own comes from the program that reads the HDF5 structure
  // (scan_program.h). Throws base::NoFileError if there is no such file, StoreError for any other failure.
  static std::shared_ptr<const DatabaseFile> open(const std::string& path, const std::string& name);

  DatabaseFile(std::string name, base::Descriptor file, std::int64_t size, Catalog catalog, bool isCatalogued)
      : name_(std::move(name)),
        file_(std::move(file)),
        size_(size),
        catalog_(std::move(catalog)),
        isCatalogued_(isCatalogued) {}

  const std::string& name() const { return name_; }
  int descriptor() const { return file_.get(); }
  std::int64_t size() const { return size_; }
  const Catalog& catalog() const { return catalog_; }
  // Whether the catalog is the file's own.
  bool isCatalogued() const { return isCatalogued_; }

  [[noreturn]] void fail(const std::string& object, const std::string& reason) const;

  // Fills `out` from the bytes at `offset`. This and all functions below are thread-safe.
  void read(std::int64_t offset, std::span<std::byte> out, const ObjectName& object) const;
  // A slab of an array as numbers of its format, unpacked if needed; `out` has exactly its size.
  void readSlab(std::int32_t array, std::int64_t slab, std::span<std::byte> out, const ObjectName& object) const;
  // Numbers `first` to `first + count - 1` of an array, whose format must be of the kind.
  std::vector<int> readInts(std::int32_t array, std::int64_t first, std::int64_t count, const ObjectName& object) const;
  std::vector<float> readFloats(std::int32_t array, std::int64_t first, std::int64_t count,
                                const ObjectName& object) const;
  std::vector<double> readDoubles(std::int32_t array, std::int64_t first, std::int64_t count,
                                  const ObjectName& object) const;

 private:
  std::vector<std::byte> readStored(const ArrayInfo& info, std::int32_t array, std::int64_t first, std::int64_t count,
                                    const ObjectName& object) const;

  std::string name_;
  base::Descriptor file_;
  std::int64_t size_;
  Catalog catalog_;
  bool isCatalogued_;
};

}  // namespace odbstore
