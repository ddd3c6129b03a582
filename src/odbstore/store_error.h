// The exceptions of the store.
#pragma once

#include "base/file_error.h"

namespace odbstore {

// Names the database, the object in it and the reason.
using StoreError = base::FileError;

}  // namespace odbstore
