#include "hdf5/dataset.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <numeric>
#include <utility>

#include "hdf5/noting_driver.h"

namespace h5 {

namespace {

// Deflate never packs more than this many bytes into one.
constexpr hsize_t kLargestCompression = 1032;

using base::NumberFormat;
constexpr std::array kFormats = {NumberFormat::float32,   NumberFormat::float64,    NumberFormat::int32,
                                 NumberFormat::int64,     NumberFormat::int8,       NumberFormat::uint8,
                                 NumberFormat::int16,     NumberFormat::uint16,     NumberFormat::uint32,
                                 NumberFormat::uint64,    NumberFormat::int16Big,   NumberFormat::uint16Big,
                                 NumberFormat::int32Big,  NumberFormat::uint32Big,  NumberFormat::int64Big,
                                 NumberFormat::uint64Big, NumberFormat::float32Big, NumberFormat::float64Big};

}  // namespace

Dataset::Dataset(Handle id, std::string path, std::shared_ptr<const FileContext> file)
    : Object(std::move(id), std::move(path), std::move(file)) {
  const Handle type(checked(H5Dget_type(this->id())), H5Tclose);
  const Handle space(checked(H5Dget_space(this->id())), H5Sclose);
  class_ = checked(H5Tget_class(type.get()));
  numberSize_ = sizeOf(type.get());
  readShape(space.get());
  if (this->file()->profile == Profile::strict) {
    checkStrict(type.get());
  } else if (this->file()->profile == Profile::free) {
    checkStorage();
  }
}

void Dataset::readShape(hid_t space) {
  if (checked(H5Sget_simple_extent_type(space)) == H5S_NULL) fail("the data set has no shape");
  dims_.resize(static_cast<std::size_t>(checked(H5Sget_simple_extent_ndims(space))));
  checked(H5Sget_simple_extent_dims(space, dims_.data(), nullptr));
  hsize_t bytes = numberSize_;
  for (const hsize_t d : dims_) {
    if (d != 0 && bytes > static_cast<hsize_t>(std::numeric_limits<std::int64_t>::max()) / d) {
      fail("the data set is too large");
    }
    bytes *= d;
  }
  const std::int64_t fileBytes = file()->bytes;
  if (fileBytes > 0 && bytes / kLargestCompression > static_cast<hsize_t>(fileBytes)) {
    fail("the data set is larger than the file can hold");
  }
}

std::optional<base::NumberFormat> Dataset::format() const {
  const Handle type(checked(H5Dget_type(id())), H5Tclose);
  for (const NumberFormat format : kFormats) {
    if (base::sizeOf(format) == numberSize_ && checked(H5Tequal(type.get(), typeOf(format))) > 0) return format;
  }
  return std::nullopt;
}

std::optional<std::int64_t> Dataset::offset() const {
  const haddr_t offset = H5Dget_offset(id());
  if (offset == HADDR_UNDEF) return std::nullopt;
  return static_cast<std::int64_t>(offset);
}

bool Dataset::isChunked() const {
  const Handle plist(checked(H5Dget_create_plist(id())), H5Pclose);
  return checked(H5Pget_layout(plist.get())) == H5D_CHUNKED;
}

std::vector<Filter> Dataset::filters() const {
  const Handle plist(checked(H5Dget_create_plist(id())), H5Pclose);
  std::vector<Filter> filters;
  const int count = checked(H5Pget_nfilters(plist.get()));
  for (int i = 0; i < count; ++i) {
    unsigned flags = 0;
    std::size_t parameters = 0;
    const H5Z_filter_t filter = checked(
        H5Pget_filter2(plist.get(), static_cast<unsigned>(i), &flags, &parameters, nullptr, 0, nullptr, nullptr));
    if (filter != H5Z_FILTER_DEFLATE && filter != H5Z_FILTER_FLETCHER32) {
      fail("filters other than gzip and Fletcher-32 are not allowed in this layout");
    }
    filters.push_back(filter == H5Z_FILTER_DEFLATE ? Filter::gzip : Filter::fletcher32);
  }
  return filters;
}

std::vector<Chunk> Dataset::chunks() const {
  std::vector<Chunk> chunks;
  if (count() == 0) return chunks;
  NotedFile& noted = *file()->noted;
  Dims first(dims_.size(), 0);
  for (hsize_t& slab = first.front(); slab < dims_.front(); ++slab) {
    // HDF5's function for the position of a chunk searches all chunks before it. Reading a chunk does not, so a driver
    // records where HDF5 would read.
    std::uint32_t skippedFilters = 0;
    std::byte untouched{};
    noted.lastRead.reset();
    noted.isNoting = true;
    const herr_t status = H5Dread_chunk(id(), H5P_DEFAULT, first.data(), &skippedFilters, &untouched);
    noted.isNoting = false;
    if (status < 0) failHdf5(fmt::format("slab {} is not stored", slab));
    if (!noted.lastRead) fail(fmt::format("slab {} is not stored", slab));
    if (skippedFilters != 0) fail(fmt::format("slab {} was stored without the filters", slab));
    chunks.push_back({noted.lastRead->offset, noted.lastRead->bytes});
  }
  return chunks;
}

void Dataset::checkStorage() const {
  if (class_ != H5T_INTEGER && class_ != H5T_FLOAT && class_ != H5T_STRING) fail("is neither numbers nor text");
  const Handle plist(checked(H5Dget_create_plist(id())), H5Pclose);
  if (checked(H5Pget_layout(plist.get())) == H5D_VIRTUAL)
    fail("virtual data sets, which lead to other files, are not read");
  if (checked(H5Pget_external_count(plist.get())) > 0) fail("external storage, which is in other files, is not read");
}

void Dataset::checkStrict(hid_t type) const {
  checkType(type);
  // Only contiguous numbers in this file have an offset. Copying the properties would take longer than opening the data
  // set.
  if (const std::optional<std::int64_t> start = offset()) return checkContiguous(*start);
  const Handle plist(checked(H5Dget_create_plist(id())), H5Pclose);
  switch (checked(H5Pget_layout(plist.get()))) {
    case H5D_CONTIGUOUS:
      if (checked(H5Pget_external_count(plist.get())) > 0) fail("external storage is not allowed in this layout");
      if (bytes() > 0) fail("the data set is not stored in full");
      return;
    case H5D_CHUNKED:
      return checkChunked(plist.get());
    default:
      fail("storage must be contiguous, or chunked by frame");
  }
}

void Dataset::checkType(hid_t type) const {
  if (class_ != H5T_INTEGER && class_ != H5T_FLOAT && class_ != H5T_STRING) fail("is neither numbers nor text");
  if (checked(H5Tis_variable_str(type)) > 0) fail("text of variable length is not allowed in this layout");
}

void Dataset::checkContiguous(std::int64_t start) const {
  if (bytes() == 0) return;
  if (H5Dget_storage_size(id()) != static_cast<hsize_t>(bytes())) fail("the data set is not stored in full");
  // As unsigned numbers, so that an address too large for a signed one lies after the end too.
  const auto end = static_cast<hsize_t>(file()->bytes);
  const auto first = static_cast<hsize_t>(start);
  if (first > end || static_cast<hsize_t>(bytes()) > end - first) {
    fail("the data set reaches beyond the end of the file");
  }
}

void Dataset::checkChunked(hid_t plist) const {
  Dims chunk(dims_.size());
  checked(H5Pget_chunk(plist, static_cast<int>(chunk.size()), chunk.data()));
  for (std::size_t i = 0; i < chunk.size(); ++i) {
    // A dimension of 0 rows still needs a chunk of 1.
    if (chunk[i] != (i == 0 ? 1 : std::max<hsize_t>(dims_[i], 1))) fail("a chunk must hold exactly one frame");
  }
  const std::vector<Filter> all = filters();
  if (std::count(all.begin(), all.end(), Filter::gzip) > 1) fail("the data set is packed twice");
  if (std::count(all.begin(), all.end(), Filter::fletcher32) > 1) fail("the data set has its checksums twice");
  const bool isPacked = std::count(all.begin(), all.end(), Filter::gzip) > 0;
  const hsize_t stored = H5Dget_storage_size(id());
  if (stored > static_cast<hsize_t>(file()->bytes)) fail("the data set reaches beyond the end of the file");
  if (static_cast<hsize_t>(bytes()) / (isPacked ? kLargestCompression : 1) > stored) {
    fail("the data set is not stored in full");
  }
}

std::int64_t Dataset::bytes() const { return count() * static_cast<std::int64_t>(numberSize_); }

std::int64_t Dataset::count() const {
  return static_cast<std::int64_t>(std::accumulate(dims_.begin(), dims_.end(), hsize_t{1}, std::multiplies<>()));
}

void Dataset::requireFloat() const {
  if (class_ != H5T_FLOAT) fail("must hold floating-point numbers");
}

void Dataset::readAll(hid_t memoryType, void* out) const {
  if (count() == 0) return;
  checked(H5Dread(id(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, out), "cannot be read");
}

// Read wide, so that a number that the smaller type cannot hold is seen instead of cut.
template <class Number>
std::vector<Number> Dataset::readWide() const {
  if (class_ != H5T_INTEGER) fail("must hold integers");
  std::vector<long long> wide(static_cast<std::size_t>(count()));
  readAll(H5T_NATIVE_LLONG, wide.data());
  std::vector<Number> numbers(wide.size());
  for (std::size_t i = 0; i < wide.size(); ++i) {
    if (!std::in_range<Number>(wide[i])) fail(fmt::format("the integer {} at place {} is too large", wide[i], i));
    numbers[i] = static_cast<Number>(wide[i]);
  }
  return numbers;
}

std::vector<int> Dataset::readInts() const { return readWide<int>(); }

std::vector<std::int64_t> Dataset::readLongs() const { return readWide<std::int64_t>(); }

std::vector<float> Dataset::readFloats() const {
  requireFloat();
  std::vector<float> numbers(static_cast<std::size_t>(count()));
  readAll(H5T_NATIVE_FLOAT, numbers.data());
  return numbers;
}

std::vector<double> Dataset::readDoubles() const {
  requireFloat();
  std::vector<double> numbers(static_cast<std::size_t>(count()));
  readAll(H5T_NATIVE_DOUBLE, numbers.data());
  return numbers;
}

void Dataset::write(const void* numbers, base::NumberFormat format) const { write(numbers, typeOf(format)); }

void Dataset::write(const void* numbers, hid_t memoryType) const {
  if (count() == 0) return;
  checked(H5Dwrite(id(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, numbers), "cannot be written");
}

void Dataset::writeChunk(hsize_t slab, std::span<const std::byte> bytes) const {
  Dims first(dims_.size(), 0);
  first.front() = slab;
  if (H5Dwrite_chunk(id(), H5P_DEFAULT, 0, first.data(), bytes.size(), bytes.data()) < 0) {
    failHdf5(fmt::format("slab {} cannot be written", slab));
  }
}

}  // namespace h5
