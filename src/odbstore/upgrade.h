// Turns a database of an older layout into one of today's.
#pragma once

#include <memory>
#include <string>

#include "odbstore/store_error.h"

namespace base {
class OutputFile;
}

namespace odbstore {

class Reader;

// Writes the database of layout 1 at `oldPath` to `newPath` in today's layout, losing nothing; locations that are equal
// in all they say are stored once. `newPath` is replaced when it exists, and only by a complete file. Returns a reader
// of what was written, whatever others make of the name meanwhile. Throws StoreError, which names `oldPath`, also where
// both paths lead to one file, which the copy would replace.
//
// Layout 1 may use all of HDF5, whose library was never made for damaged or hostile files: it is read by a program of
// its own with limits (scan_program.h), which writes under a temporary name; this one looks at the whole of that and
// gives it its name.
std::shared_ptr<const Reader> upgrade(const std::string& oldPath, const std::string& newPath);

// A reader of the database in `file`, which is not published yet. Throws StoreError unless it has a catalog, with which
// all its bytes agree.
std::shared_ptr<const Reader> requireComplete(const base::OutputFile& file);

}  // namespace odbstore
