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

// Writes the database of layout 1 at `oldPath` to `newPath` in layout 2, losing nothing; locations that are equal in
// all they say are stored once. `newPath` is replaced when it exists, and only by a complete file. Returns a reader of
// what was written, whatever others make of the name meanwhile. Throws StoreError, which names `oldPath`: also for
// results that layout 2 cannot hold (a field that is described differently from frame to frame), and where both paths
// lead to one file, which the copy would replace.
//
// Layout 1 may use all of HDF5, whose library was never made for damaged or hostile files: it is read in a child
// process with limits (limited_child.h), which writes under a temporary name; the parent looks at the whole of that and
// gives it its name. No other thread may run.
std::shared_ptr<const Reader> upgrade(const std::string& oldPath, const std::string& newPath);

// A reader of the database of layout 2 in `file`, which is not published yet. Throws StoreError unless it is there to
// its end and agrees with its checksums.
std::shared_ptr<const Reader> requireComplete(const base::OutputFile& file);

// Whether the file has another superblock than every database of layout 2, so that it must be looked at in a child too.
// False for what cannot be read at all, which is for others to say.
bool isForeign(const std::string& path);

// The layout of such a file, found out in a child. Throws StoreError.
int foreignLayout(const std::string& path);

}  // namespace odbstore
