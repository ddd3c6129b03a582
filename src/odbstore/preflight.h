// What can be told of a file before HDF5 sees it.
#pragma once

#include <cstdint>
#include <string>

#include "base/descriptor.h"

namespace odbstore {

struct FileStart {
  std::int64_t bytes = 0;
  // Whether the file starts with the superblock that every database of layout 2 and 3 has, of version 3 with addresses
  // of eight bytes.
  bool isChecked = false;
};

struct OpenedFile {
  base::Descriptor file;
  FileStart start;
};

// Opens `path`, called `name` in messages, without waiting, and looks at its kind, size and first bytes. Throws a
// base::NoFileError for what cannot be opened or is no regular file, a StoreError for what is empty, is no HDF5 file,
// or has a superblock of version 3 (HDF5 File Format, version 3.0, section II.A) that says that the file is cut off,
// goes on behind its end, or is still being written. Files that start otherwise are left to HDF5.
OpenedFile openForReading(const std::string& path, const std::string& name);

// The same of a file that is open already.
FileStart examine(int file, const std::string& name);

}  // namespace odbstore
