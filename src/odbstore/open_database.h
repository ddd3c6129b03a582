// Opens a database with HDF5.
#pragma once

#include <string>

#include "hdf5/group.h"

namespace odbstore {

// Returns the root group of the database at `path`, whose `layout` is received. A file of the newest layout may use no
// more of HDF5 than the strict profile. What is no database of ours is a StoreError that says what it is instead.
h5::Group openDatabase(const std::string& path, int& layout);
// The same, with another name than its path in messages.
h5::Group openDatabase(const std::string& path, const std::string& name, int& layout);

}  // namespace odbstore
