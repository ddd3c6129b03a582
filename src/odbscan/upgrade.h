// Reads databases of layout 1, and turns them into ones of today's.
#pragma once

#include <string>

#include "hdf5/group.h"

namespace odbscan {

// Reads the database of layout 1 behind a descriptor and writes it to `path`, called `name` in messages, losing
// nothing; locations that are equal in all they say are stored once. Throws base::FileError, without a name for the old
// file.
void upgrade(int descriptor, const std::string& path, const std::string& name);

// Reads all of a database of layout 1 and keeps nothing. Throws base::FileError for what cannot be read, and for what
// no upgrade can hold.
void readOld(const h5::Group& root);

}  // namespace odbscan
