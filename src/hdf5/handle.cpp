#include "hdf5/handle.h"

#include <string_view>
#include <utility>

namespace h5 {

namespace {

// For a failed system call HDF5 reports time, buffer and offset in two lines; what failed and why is enough.
std::string shortened(const std::string& description) {
  constexpr std::string_view kWhy = "error message = '";
  const std::size_t what = description.find(": time = ");
  const std::size_t why = description.find(kWhy);
  if (what == std::string::npos || why == std::string::npos) return description;
  const std::size_t begin = why + kWhy.size();
  return description.substr(0, what) + ": " + description.substr(begin, description.find('\'', begin) - begin);
}

}  // namespace

Handle::Handle(Handle&& other) noexcept : id_(std::exchange(other.id_, -1)), close_(other.close_) {}

Handle& Handle::operator=(Handle&& other) noexcept {
  std::swap(id_, other.id_);
  std::swap(close_, other.close_);
  return *this;
}

Handle::~Handle() {
  if (id_ >= 0) close_(id_);
}

void startHdf5() {
  // Every file is closed by its handle; tidying up the memory of a process that ends only takes time.
  static const bool done = H5dont_atexit() >= 0 && H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr) >= 0;
  static_cast<void>(done);
}

std::string lastHdf5Error() {
  // Walked upwards, the first entry is the innermost failure: the one that says why.
  std::string reason;
  const auto keepFirst = [](unsigned n, const H5E_error2_t* error, void* out) -> herr_t {
    if (n == 0 && error->desc != nullptr) *static_cast<std::string*>(out) = shortened(error->desc);
    return 0;
  };
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, keepFirst, &reason);
  return reason;
}

std::string explained(const std::string& reason) {
  const std::string why = lastHdf5Error();
  return why.empty() ? reason : reason + " (" + why + ")";
}

hid_t typeOf(base::NumberFormat format) {
  using enum base::NumberFormat;
  switch (format) {
    case int8:
      return H5T_STD_I8LE;
    case uint8:
      return H5T_STD_U8LE;
    case int16:
      return H5T_STD_I16LE;
    case uint16:
      return H5T_STD_U16LE;
    case int32:
      return H5T_STD_I32LE;
    case uint32:
      return H5T_STD_U32LE;
    case int64:
      return H5T_STD_I64LE;
    case uint64:
      return H5T_STD_U64LE;
    case float32:
      return H5T_IEEE_F32LE;
    case float64:
      return H5T_IEEE_F64LE;
    case int16Big:
      return H5T_STD_I16BE;
    case uint16Big:
      return H5T_STD_U16BE;
    case int32Big:
      return H5T_STD_I32BE;
    case uint32Big:
      return H5T_STD_U32BE;
    case int64Big:
      return H5T_STD_I64BE;
    case uint64Big:
      return H5T_STD_U64BE;
    case float32Big:
      return H5T_IEEE_F32BE;
    case float64Big:
      return H5T_IEEE_F64BE;
  }
  return H5I_INVALID_HID;
}

}  // namespace h5
