// Turns a database of an older layout into one of today's.
#pragma once

#include <string>

#include "odbstore/store_error.h"

namespace odbstore {

// Writes the database of layout 1 at `oldPath` to `newPath` in layout 2, losing nothing; locations that are equal in
// all they say are stored once. `newPath` is replaced when it exists, and only by a complete file. Throws StoreError,
// also for results that layout 2 cannot hold: a field that is described differently from frame to frame.
void upgrade(const std::string& oldPath, const std::string& newPath);

}  // namespace odbstore
