// Turns failures of the store into exceptions of the interface.
#pragma once

#include <utility>

#include "odbaccess/odb_Exception.h"
#include "odbstore/store_error.h"

namespace odb_detail {

// Calls `read` and returns what it returns; a StoreError becomes an odb_Exception with the same text.
template <class Read>
decltype(auto) guarded(Read&& read) {
  try {
    return std::forward<Read>(read)();
  } catch (const odbstore::StoreError& error) {
    odb_Exception failure(odb_Exception::fileError, atr_String(error.what()));
    failure.Propagate();
    throw;  // Propagate does not return
  }
}

}  // namespace odb_detail
