// An open database: its file, and the catalog of what is in it.
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

// What an object is called in messages; asked for only when there is one.
using ObjectName = std::function<std::string()>;

class DatabaseFile {
 public:
  // Opens the database at `path`, called `name` in messages. Null where it is of an older layout, which must be
  // upgraded first. What the file carries no good catalog for is found out by the program that reads HDF5's structure
  // (scan_program.h). Throws base::NoFileError where there is no such file, StoreError for all else.
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

  // Fills `out` from the bytes at `offset`. Threads may call it at the same time, and all that follows.
  void read(std::int64_t offset, std::span<std::byte> out, const ObjectName& object) const;
  // A slab of an array as numbers of its format; `out` has room for just those. Packed ones are unpacked into just
  // that.
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
