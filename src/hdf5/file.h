// Files as a whole.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "hdf5/group.h"

namespace h5 {

// Opens a file of `bytes` bytes behind a descriptor for reading and returns its root group. `profileOf` is asked with
// that group, which is of the free profile until then, how much of HDF5 the file may use. Throws base::FileError, whose
// file has no name: whoever has the descriptor knows it. The descriptor must stay open.
Group openFile(int descriptor, std::int64_t bytes, const std::function<Profile(const Group& root)>& profileOf);

// The version of the superblock of an open file.
unsigned superblockOf(const Group& root);

// Creates a file with the structure of HDF5 1.10 under `path`, emptying one that exists; `name` goes into messages.
// Room for structure is taken in blocks of `structureBytes`, so that what is made in one go lies in one piece.
Group createFile(const std::string& path, const std::string& name, std::int64_t structureBytes);

// Hands everything written so far to the operating system.
void flushFile(const Group& root);

// The bytes that HDF5 has given so far to the file under construction that an object is in.
std::int64_t endOfFile(const Object& member);

}  // namespace h5
