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

// Writes the database of layout 1 at `oldPath` to `newPath` in today's layout without loss; identical locations are
// stored once. An existing `newPath` is replaced, and only by a complete file. Returns a reader of the written file,
// even if the name has been reused since. Throws StoreError, naming `oldPath`, also if both paths lead to the same
// file, which the copy would replace.
//
// Layout 1 may use any feature of HDF5, whose library was not made for damaged or hostile files. It is therefore read
// by a separate program with limits (scan_program.h), which writes under a temporary name; this one checks the whole
// copy and gives it the final name.
std::shared_ptr<const Reader> upgrade(const std::string& oldPath, const std::string& newPath);

// A reader of the database in `file`, which does not have its final name yet. Throws StoreError unless it has a catalog
// and all its bytes match the checksums in it.
std::shared_ptr<const Reader> requireComplete(const base::OutputFile& file);

}  // namespace odbstore
