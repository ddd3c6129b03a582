// Files as a whole.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "hdf5/group.h"

namespace h5 {

// Opens the file of that size for reading and returns its root group. Messages call it `name`. `profileOf` is asked
// with that group, which is of the free profile until then, how much of HDF5 the file may use. Throws base::FileError.
Group openFile(const std::string& path, const std::string& name, std::int64_t bytes,
               const std::function<Profile(const Group& root)>& profileOf);

// The version of the superblock of an open file.
unsigned superblockOf(const Group& root);

// Creates a file with the structure of HDF5 1.10 under `path`, emptying one that exists; `name` goes into messages.
Group createFile(const std::string& path, const std::string& name);

// Hands everything written so far to the operating system.
void flushFile(const Group& root);

// The bytes that a file under construction takes so far.
std::int64_t sizeOfFile(const Group& root);

}  // namespace h5
