// Compares the arrays of a catalogued file with the sums that the catalog has of them.
#pragma once

#include <cstdint>
#include <functional>

#include "odbstore/database_file.h"

namespace odbstore {

// Bytes begin to end - 1 of the file, which belong to one slab of an array and do not agree with their sum.
struct DamagedPiece {
  std::int32_t array = kNone;
  std::int64_t slab = 0;
  Extent bytes;
};

// Reads all arrays of a file whose catalog has sums, and calls `take` for each piece that does not agree. Throws
// StoreError where the file cannot be read.
void compareSums(const DatabaseFile& file, const std::function<void(const DamagedPiece& piece)>& take);

}  // namespace odbstore
