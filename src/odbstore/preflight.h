// What can be told of a file before HDF5 sees it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace odbstore {

struct Preflight {
  std::int64_t bytes = 0;
  // Whether the file starts with such a superblock, with addresses of eight bytes.
  bool isChecked = false;
};

// Opens `path` without waiting and looks at its kind, size and first bytes. Throws a base::NoFileError for what cannot
// be opened or is no regular file, a StoreError for one that is empty, or has a superblock of version 3 (HDF5 File
// Format, version 3.0, section II.A, which every database of layout 2 has) that says that the file is cut off, goes on
// behind its end, or is still being written. Files that start otherwise are left to HDF5.
Preflight checkBeforeOpening(const std::string& path);

// Reads the first bytes of the open file; how many there are. Throws a StoreError that names `path` where that fails.
std::size_t readStart(int file, const std::string& path, std::span<char> bytes);

}  // namespace odbstore
