// The checksums that a database carries of its own bytes, numbers and structure alike: the data set /checksums.
//
// It holds the CRC32C of every block of the file, then the one of these sums as they stand there. A sum cannot cover
// itself, so the bytes of the data set count as zeros; a block reaches to the end of the file at most, and one behind
// it is empty. docs/database-format.md has it in full.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace h5 {
class Group;
}

namespace odbstore {

// Where the sums stand in their file, and what each is of.
struct ChecksumPlace {
  std::int64_t offset = 0;
  std::int64_t blocks = 0;     // there is one number more, the sum of the sums
  std::int64_t blockSize = 0;  // bytes
};

// Makes the data set in a file under construction to which nothing is added afterwards, without its numbers.
ChecksumPlace reserveChecksums(const h5::Group& root);

// Sums up the closed file at `path`, called `name` in messages, and puts the sums into their place.
void fillChecksums(const std::string& path, const std::string& name, const ChecksumPlace& place);

// The place of the sums in an open file; nothing when it has none. A data set of that name that cannot hold them is an
// error of it.
std::optional<ChecksumPlace> findChecksums(const h5::Group& root);

// What comparing a file with its sums found.
struct ChecksumReport {
  bool tableIsDamaged = false;              // then nothing can be said of the blocks
  std::vector<std::int64_t> damagedBlocks;  // by number, from 0
};

// Reads the whole file at `path` once, from its begin to its end.
ChecksumReport compareChecksums(const std::string& path, const ChecksumPlace& place);

}  // namespace odbstore
