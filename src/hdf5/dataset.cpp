#include "hdf5/dataset.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

namespace h5 {

namespace {

// Deflate never packs more than this many bytes into one.
constexpr hsize_t kLargestCompression = 1032;

}  // namespace

Dataset::Dataset(Handle id, std::string path, std::shared_ptr<const FileContext> file)
    : Object(std::move(id), std::move(path), std::move(file)) {
  const Handle type(checked(H5Dget_type(this->id())), H5Tclose);
  const Handle space(checked(H5Dget_space(this->id())), H5Sclose);
  class_ = checked(H5Tget_class(type.get()));
  numberSize_ = sizeOf(type.get());
  readShape(space.get());
  if (this->file()->profile == Profile::strict) checkProfile(type.get());
  direct_ = findDirect(type.get());
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

std::optional<Dataset::Direct> Dataset::findDirect(hid_t type) const {
  const hid_t native[] = {H5T_NATIVE_FLOAT, H5T_NATIVE_DOUBLE, H5T_NATIVE_INT};
  if (std::none_of(std::begin(native), std::end(native), [&](hid_t n) { return checked(H5Tequal(type, n)) > 0; })) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> at = offset();
  if (!at || !file()->descriptor) return std::nullopt;
  return Direct{*file()->descriptor, *at};
}

bool Dataset::holds(hid_t type) const {
  const Handle own(checked(H5Dget_type(id())), H5Tclose);
  return checked(H5Tequal(own.get(), type)) > 0;
}

std::optional<std::int64_t> Dataset::offset() const {
  const haddr_t offset = H5Dget_offset(id());
  if (offset == HADDR_UNDEF) return std::nullopt;
  return static_cast<std::int64_t>(offset);
}

std::vector<Stretch> Dataset::stretches() const {
  std::vector<Stretch> stretches;
  if (const std::optional<std::int64_t> start = offset()) {
    const std::int64_t slabs = dims_.empty() ? 1 : static_cast<std::int64_t>(dims_.front());
    if (bytes() > 0) stretches.push_back({*start, bytes(), 0, bytes() / slabs});
    return stretches;
  }
  const Handle plist(checked(H5Dget_create_plist(id())), H5Pclose);
  if (checked(H5Pget_layout(plist.get())) != H5D_CHUNKED) return stretches;
  // A chunk is a slab, as the profile has it.
  Dims first(dims_.size(), 0);
  for (hsize_t& slab = first.front(); slab < dims_.front(); ++slab) {
    unsigned skippedFilters = 0;
    haddr_t address = HADDR_UNDEF;
    hsize_t bytes = 0;
    if (H5Dget_chunk_info_by_coord(id(), first.data(), &skippedFilters, &address, &bytes) < 0) {
      failHdf5(fmt::format("slab {} cannot be found", slab));
    }
    if (address == HADDR_UNDEF) fail(fmt::format("slab {} is not stored", slab));
    const auto size = static_cast<std::int64_t>(bytes);
    stretches.push_back({static_cast<std::int64_t>(address), size, static_cast<std::int64_t>(slab), size});
  }
  return stretches;
}

void Dataset::checkProfile(hid_t type) const {
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
  // As unsigned numbers, so that an address too large for a signed one lies behind the end too.
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
  bool isPacked = false;
  const int filters = checked(H5Pget_nfilters(plist));
  for (int i = 0; i < filters; ++i) {
    unsigned flags = 0;
    std::size_t parameters = 0;
    const H5Z_filter_t filter =
        checked(H5Pget_filter2(plist, static_cast<unsigned>(i), &flags, &parameters, nullptr, 0, nullptr, nullptr));
    if (filter != H5Z_FILTER_DEFLATE && filter != H5Z_FILTER_FLETCHER32) {
      fail("filters other than gzip and Fletcher-32 are not allowed in this layout");
    }
    if (filter == H5Z_FILTER_DEFLATE && isPacked) fail("the data set is packed twice");
    isPacked = isPacked || filter == H5Z_FILTER_DEFLATE;
  }
  const hsize_t stored = H5Dget_storage_size(id());
  if (stored > static_cast<hsize_t>(file()->bytes)) fail("the data set reaches beyond the end of the file");
  if (static_cast<hsize_t>(bytes()) / (isPacked ? kLargestCompression : 1) > stored) {
    fail("the data set is not stored in full");
  }
}

std::int64_t Dataset::bytes() const { return count() * static_cast<std::int64_t>(numberSize_); }

std::int64_t Dataset::count() const {
  return static_cast<std::int64_t>(
      std::accumulate(dims_.begin(), dims_.end(), hsize_t{1}, [](hsize_t a, hsize_t b) { return a * b; }));
}

void Dataset::requireFloat() const {
  if (class_ != H5T_FLOAT) fail("must hold floating-point numbers");
}

void Dataset::readAll(hid_t memoryType, void* out) const {
  if (count() == 0) return;
  checked(H5Dread(id(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, out), "cannot be read");
}

std::vector<int> Dataset::readInts() const {
  if (class_ != H5T_INTEGER) fail("must hold integers");
  std::vector<int> numbers(static_cast<std::size_t>(count()));
  if (isDirect()) {
    readDirect(0, count(), numbers.data());
    return numbers;
  }
  if (numberSize_ < sizeof(int)) {
    readAll(H5T_NATIVE_INT, numbers.data());
    return numbers;
  }
  // Read wide, so that a number that int32 cannot hold is seen instead of cut.
  std::vector<long long> wide(numbers.size());
  readAll(H5T_NATIVE_LLONG, wide.data());
  for (std::size_t i = 0; i < wide.size(); ++i) {
    if (!std::in_range<int>(wide[i])) fail(fmt::format("the integer {} at place {} is too large", wide[i], i));
    numbers[i] = static_cast<int>(wide[i]);
  }
  return numbers;
}

std::vector<float> Dataset::readFloats() const {
  requireFloat();
  std::vector<float> numbers(static_cast<std::size_t>(count()));
  if (isDirect() && numberSize_ == sizeof(float)) {
    readDirect(0, count(), numbers.data());
    return numbers;
  }
  readAll(H5T_NATIVE_FLOAT, numbers.data());
  return numbers;
}

std::vector<double> Dataset::readDoubles() const {
  requireFloat();
  std::vector<double> numbers(static_cast<std::size_t>(count()));
  if (isDirect() && numberSize_ == sizeof(double)) {
    readDirect(0, count(), numbers.data());
    return numbers;
  }
  readAll(H5T_NATIVE_DOUBLE, numbers.data());
  return numbers;
}

void Dataset::transferSlab(hsize_t index, hid_t memoryType, void* out, bool writing) const {
  Dims start(dims_.size(), 0);
  Dims extent = dims_;
  start.front() = index;
  extent.front() = 1;
  hsize_t numbers = 1;
  for (const hsize_t d : extent) numbers *= d;
  if (numbers == 0) return;
  const Handle fileSpace(checked(H5Dget_space(id())), H5Sclose);
  // Of the same shape as what is taken from the file: HDF5 pairs different shapes number by number.
  const Handle memorySpace(checked(H5Screate_simple(static_cast<int>(extent.size()), extent.data(), nullptr)),
                           H5Sclose);
  checked(H5Sselect_hyperslab(fileSpace.get(), H5S_SELECT_SET, start.data(), nullptr, extent.data(), nullptr),
          "a slab cannot be selected");
  const herr_t status = writing ? H5Dwrite(id(), memoryType, memorySpace.get(), fileSpace.get(), H5P_DEFAULT, out)
                                : H5Dread(id(), memoryType, memorySpace.get(), fileSpace.get(), H5P_DEFAULT, out);
  if (status < 0) failHdf5(fmt::format("slab {} cannot be {}", index, writing ? "written" : "read"));
}

void Dataset::readSlab(hsize_t index, float* out) const { transferSlab(index, H5T_NATIVE_FLOAT, out, false); }

void Dataset::readSlab(hsize_t index, double* out) const { transferSlab(index, H5T_NATIVE_DOUBLE, out, false); }

void Dataset::readDirect(std::int64_t first, std::int64_t count, void* out) const {
  const auto size = static_cast<std::int64_t>(numberSize_);
  auto* to = static_cast<char*>(out);
  std::int64_t at = direct_->offset + first * size;
  std::int64_t left = count * size;
  while (left > 0) {
    const ssize_t got = ::pread(direct_->file, to, static_cast<std::size_t>(left), at);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail(fmt::format("cannot be read ({})", std::strerror(errno)));
    if (got == 0) fail("the file ends inside this data set");
    to += got;
    at += got;
    left -= got;
  }
}

void Dataset::writeSlab(hsize_t index, const float* rows) const {
  transferSlab(index, H5T_NATIVE_FLOAT, const_cast<float*>(rows), true);
}

void Dataset::writeSlab(hsize_t index, const double* rows) const {
  transferSlab(index, H5T_NATIVE_DOUBLE, const_cast<double*>(rows), true);
}

void Dataset::write(const void* numbers, hid_t memoryType) const {
  if (count() == 0) return;
  checked(H5Dwrite(id(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, numbers), "cannot be written");
}

}  // namespace h5
