// Checks of a file before HDF5 sees it.
#pragma once

#include <cstdint>
#include <string>

#include "base/descriptor.h"

namespace odbstore {

struct FileStart {
  std::int64_t bytes = 0;
  // Whether the file starts with the superblock of layouts 2 and 3: version 3 with addresses of eight bytes.
  bool isChecked = false;
};

struct OpenedFile {
  base::Descriptor file;
  FileStart start;
};

// Opens `path`, called `name` in messages, without waiting, and checks its kind, size and first bytes. Throws
// base::NoFileError if it cannot be opened or is not a regular file. Throws StoreError if it is empty or not an HDF5
// file, or if a superblock of version 3 (HDF5 File Format, version 3.0, section II.A) says that the file is truncated,
// has extra bytes at the end, or is still being written. Files with other superblocks are left to HDF5.
OpenedFile openForReading(const std::string& path, const std::string& name);

// The same for a file that is already open.
FileStart examine(int file, const std::string& name);

}  // namespace odbstore
