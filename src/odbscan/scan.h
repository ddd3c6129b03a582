// Reads the structure of a database with HDF5.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hdf5/group.h"

namespace odbscan {

// Opens the database behind a descriptor, `bytes` long, and returns its root group; `layout` receives its layout. A
// file of layout 2 or 3 may use no more of HDF5 than the strict profile. A file that is not a database is a FileError
// that says what it is. Errors do not name the file: the program's caller knows it.
h5::Group openDatabase(int descriptor, int& layout);

// The catalog of a database of layout 2 or 3. The first fault is a FileError.
std::vector<std::byte> scan(const h5::Group& root, int layout);

// All that can be said of a database for `kolvex verify`, packed as odbstore/inspection.h has it.
std::string inspect(const h5::Group& root, int layout);

}  // namespace odbscan
