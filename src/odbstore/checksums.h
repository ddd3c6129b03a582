// The checksums that a database of layout 2 may carry of its own bytes, numbers and structure alike: the data set
// /checksums.
//
// It holds the CRC32C of every block of the file, then the one of these sums as they stand there. A sum cannot cover
// itself, so the bytes of the data set count as zeros; a block reaches to the end of the file at most, and one behind
// it is empty. docs/database-format.md has it in full. Files of layout 3 have sums in their catalog instead.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

class DatabaseFile;

// Where the sums stand in their file, and what each is of.
struct ChecksumPlace {
  std::int64_t offset = 0;
  std::int64_t blocks = 0;     // there is one number more, the sum of the sums
  std::int64_t blockSize = 0;  // bytes
};

// The place of the sums in a file of so many bytes, by its catalog; nothing when it has none. Throws StoreError, which
// names `file`, where they cannot be sums of it.
std::optional<ChecksumPlace> findChecksums(const columns::Catalog& catalog, std::int64_t bytes,
                                           const std::string& file);

// What comparing a file with its sums found.
struct ChecksumReport {
  bool tableIsDamaged = false;              // then nothing can be said of the blocks
  std::vector<std::int64_t> damagedBlocks;  // by number, from 0
};

// Reads the whole file once, from its begin to its end.
ChecksumReport compareChecksums(const DatabaseFile& file, const ChecksumPlace& place);

}  // namespace odbstore
