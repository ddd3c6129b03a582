// Identifiers of HDF5, and what it says of its failures.
//
// The border to HDF5: no other folder includes HDF5's header. Each call is wrapped once, and a failure is a FileError
// that names the file and the object and carries HDF5's own explanation.
#pragma once

#include <hdf5.h>

#include <string>

#include "base/numbers.h"

namespace h5 {

// An HDF5 identifier and the call that closes it.
class Handle {
 public:
  using Closer = herr_t (*)(hid_t);

  Handle() = default;
  Handle(hid_t id, Closer close) : id_(id), close_(close) {}
  Handle(Handle&& other) noexcept;
  Handle& operator=(Handle&& other) noexcept;
  ~Handle();

  hid_t get() const { return id_; }
  explicit operator bool() const { return id_ >= 0; }

 private:
  hid_t id_ = -1;
  Closer close_ = nullptr;
};

// Starts the library, once per process, and silences its own printing of errors.
void startHdf5();

// Why the last HDF5 call of this thread failed, in HDF5's words; empty when it did not say.
std::string lastHdf5Error();
// The same after a reason of our own.
std::string explained(const std::string& reason);

// HDF5's type of numbers in a file. Not to be closed.
hid_t typeOf(base::NumberFormat format);

}  // namespace h5
