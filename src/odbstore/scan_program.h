// Runs the program that reads the HDF5 structure and writes upgraded copies, so that a crash of the HDF5 library ends
// only that program.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "odbstore/catalog.h"

namespace odbstore {

// The catalog of an open file of `size` bytes, called `name` in messages, that has none of its own. Nothing for a file
// of layout 1. Throws StoreError, also if reading exceeds the limits of base::limitsFor() or crashes the program.
std::optional<Catalog> scanCatalog(int file, const std::string& name, std::int64_t size);

// The path of the program: as defined by the program that uses the library, else beside it, else where kolvex is
// installed.
std::string scanProgramPath();

// The first byte of the program's answer to a request for a catalog; the catalog follows.
inline constexpr char kScanned = 'C';
inline constexpr char kOlderLayout = 'O';

}  // namespace odbstore
