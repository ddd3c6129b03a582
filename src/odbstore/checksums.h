// The checksums of all bytes, numbers and structure alike, that a database of layout 2 may have: the data set
// /checksums.
//
// It holds the CRC32C of every block of the file, followed by the CRC32C of these sums as stored. A checksum cannot
// cover itself, so the bytes of the data set count as zeros. A block ends at the end of the file at the latest; blocks
// after that are empty. See docs/database-format.md. Files of layout 3 have checksums in their catalog instead.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

class DatabaseFile;

// Where the checksums are, and what each one covers.
struct ChecksumPlace {
  std::int64_t offset = 0;
  std::int64_t blocks = 0;     // there is one number more, the sum of the sums
  std::int64_t blockSize = 0;  // bytes
};

// Where the checksums are in a file of `bytes` bytes, according to its catalog; nothing if it has none. Throws
// StoreError, naming `file`, if they cannot belong to a file of that size.
std::optional<ChecksumPlace> findChecksums(const columns::Catalog& catalog, std::int64_t bytes,
                                           const std::string& file);

// The result of comparing a file with its checksums.
struct ChecksumReport {
  bool tableIsDamaged = false;              // in that case the state of the blocks is unknown
  std::vector<std::int64_t> damagedBlocks;  // by number, from 0
};

// Reads the whole file once, from beginning to end.
ChecksumReport compareChecksums(const DatabaseFile& file, const ChecksumPlace& place);

}  // namespace odbstore
