// Compares the arrays of a file with the checksums in its catalog.
#pragma once

#include <cstdint>
#include <functional>

#include "odbstore/database_file.h"

namespace odbstore {

// Bytes of the file that belong to one slab of an array and do not match their checksum.
struct DamagedPiece {
  std::int32_t array = kNone;
  std::int64_t slab = 0;
  Extent bytes;
};

// Reads all arrays of a file whose catalog has checksums, and calls `take` for each piece that does not match. Throws
// StoreError if the file cannot be read.
void compareSums(const DatabaseFile& file, const std::function<void(const DamagedPiece& piece)>& take);

}  // namespace odbstore
