// The program that reads HDF5's structure, and writes upgraded copies, where a crash of the HDF5 library harms nobody.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "odbstore/catalog.h"

namespace odbstore {

// The catalog of an open file of `size` bytes, called `name` in messages, that has none of its own. Nothing where the
// file is of layout 1. Throws StoreError, also where the file takes more than the limits of base::limitsFor(), or makes
// the program crash.
std::optional<Catalog> scanCatalog(int file, const std::string& name, std::int64_t size);

// Where the program is: where the one that uses the library says, else beside that, else where kolvex is installed.
std::string scanProgramPath();

// The first byte of what the program answers when it is asked for a catalog; the catalog follows.
inline constexpr char kScanned = 'C';
inline constexpr char kOlderLayout = 'O';

}  // namespace odbstore
