#include "odbstore/database_file.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "odbstore/catalog_check.h"
#include "odbstore/catalog_trailer.h"
#include "odbstore/preflight.h"
#include "odbstore/scan_program.h"
#include "odbstore/store_error.h"
#include "odbstore/unpack.h"

namespace odbstore {

namespace {

// HDF5 takes the same kind of lock, shared by readers. A file system without locks has no such protection.
void lockForReading(int file, const std::string& name) {
  if (::flock(file, LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  throw StoreError(name, "", "is open for writing in another program");
}

// The file's own catalog. Nothing if there is none or the file has changed since it was made.
std::optional<Catalog> ownCatalog(int file, const std::string& name, std::int64_t size) {
  Trailer trailer;
  std::optional<std::vector<std::byte>> bytes = readCatalog(file, size, trailer);
  if (!bytes) return std::nullopt;
  const std::int64_t begin = size - trailer.length;
  Catalog catalog(std::move(*bytes), name, begin);
  if (sumStructure(file, catalog.extents(), begin) != trailer.structureSum) return std::nullopt;
  return catalog;
}

}  // namespace

std::shared_ptr<const DatabaseFile> DatabaseFile::open(const std::string& path, const std::string& name) {
  OpenedFile opened = openForReading(path, name);
  lockForReading(opened.file.get(), name);
  std::optional<Catalog> catalog = ownCatalog(opened.file.get(), name, opened.start.bytes);
  const bool isCatalogued = catalog.has_value();
  if (!isCatalogued) catalog = scanCatalog(opened.file.get(), name, opened.start.bytes);
  if (!catalog) return nullptr;
  checkContent(*catalog, [&name](const std::string& object, const std::string& reason) {
    throw StoreError(name, object, reason);
  });
  return std::make_shared<const DatabaseFile>(name, std::move(opened.file), opened.start.bytes, std::move(*catalog),
                                              isCatalogued);
}

void DatabaseFile::fail(const std::string& object, const std::string& reason) const {
  throw StoreError(name_, object, reason);
}

void DatabaseFile::read(std::int64_t offset, std::span<std::byte> out, const ObjectName& object) const {
  const std::optional<std::size_t> got = base::readAt(file_.get(), offset, out);
  if (!got) fail(object(), fmt::format("cannot be read ({})", std::strerror(errno)));
  if (*got < out.size()) fail(object(), "the file ends inside this data set");
}

void DatabaseFile::readSlab(std::int32_t array, std::int64_t slab, std::span<std::byte> out,
                            const ObjectName& object) const {
  if (out.empty()) return;
  const ArrayInfo info = catalog_.array(array);
  const Extent extent = catalog_.slab(info, slab);
  if (info.packing == Packing::contiguous || info.packing == Packing::unpacked) return read(extent.begin, out, object);
  std::vector<std::byte> stored(static_cast<std::size_t>(extent.end - extent.begin));
  read(extent.begin, stored, object);
  if (const char* const reason = unpack(stored, info.packing, out)) {
    fail(object(), fmt::format("slab {} cannot be read ({})", slab, reason));
  }
}

std::vector<std::byte> DatabaseFile::readStored(const ArrayInfo& info, std::int32_t array, std::int64_t first,
                                                std::int64_t count, const ObjectName& object) const {
  const auto size = static_cast<std::int64_t>(base::sizeOf(info.format));
  std::vector<std::byte> stored(static_cast<std::size_t>(count * size));
  if (count == 0) return stored;
  if (info.packing == Packing::contiguous) {
    read(info.place + first * size, stored, object);
    return stored;
  }
  std::vector<std::byte> slab(static_cast<std::size_t>(info.slabBytes()));
  for (std::int64_t i = first / info.slabNumbers; i * info.slabNumbers < first + count; ++i) {
    readSlab(array, i, slab, object);
    const std::int64_t slabFirst = i * info.slabNumbers;
    const std::int64_t from = std::max(first, slabFirst);
    const std::int64_t to = std::min(first + count, slabFirst + info.slabNumbers);
    std::memcpy(stored.data() + (from - first) * size, slab.data() + (from - slabFirst) * size,
                static_cast<std::size_t>((to - from) * size));
  }
  return stored;
}

std::vector<int> DatabaseFile::readInts(std::int32_t array, std::int64_t first, std::int64_t count,
                                        const ObjectName& object) const {
  const ArrayInfo info = catalog_.array(array);
  std::vector<int> numbers(static_cast<std::size_t>(count));
  if (info.isDirect() && info.format == base::NumberFormat::int32) {
    read(info.place + first * static_cast<std::int64_t>(sizeof(int)), std::as_writable_bytes(std::span(numbers)),
         object);
    return numbers;
  }
  const std::vector<std::byte> stored = readStored(info, array, first, count, object);
  if (const std::optional<std::size_t> place = base::toInts(stored, info.format, numbers)) {
    fail(object(), fmt::format("the integer at index {} is too large", static_cast<std::size_t>(first) + *place));
  }
  return numbers;
}

std::vector<float> DatabaseFile::readFloats(std::int32_t array, std::int64_t first, std::int64_t count,
                                            const ObjectName& object) const {
  const ArrayInfo info = catalog_.array(array);
  std::vector<float> numbers(static_cast<std::size_t>(count));
  base::toFloats(readStored(info, array, first, count, object), info.format, numbers);
  return numbers;
}

std::vector<double> DatabaseFile::readDoubles(std::int32_t array, std::int64_t first, std::int64_t count,
                                              const ObjectName& object) const {
  const ArrayInfo info = catalog_.array(array);
  std::vector<double> numbers(static_cast<std::size_t>(count));
  base::toDoubles(readStored(info, array, first, count, object), info.format, numbers);
  return numbers;
}

}  // namespace odbstore
