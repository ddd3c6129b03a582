// Reads databases of layout 1, which may use all of HDF5: to be called in a child process (limited_child.h).
#pragma once

#include <string>

namespace odbstore {

class Writer;

// Hands all that the database at `path` holds to `writer`, which is not finished by that. Throws StoreError, for what
// the writer refuses too.
void copyLayout1(const std::string& path, Writer& writer);

// Reads all of it and keeps nothing. Throws StoreError for what cannot be read.
void readLayout1(const std::string& path);

}  // namespace odbstore
