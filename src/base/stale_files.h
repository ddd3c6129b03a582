// Temporary files of killed writers: how they are distinguished from files in use, and removed.
#pragma once

#include <string>

namespace base {

// The infix between a final name and the six characters of a temporary name.
constexpr const char* kTemporaryMark = ".tmp.";

// Keeps others from removing the open file while it is open. On a file system without locks this has no effect, and
// nothing is removed.
void holdAgainstClearing(int file);

// Removes the temporary files of `finalPath` that nobody has locked. Files that cannot be removed are left silently.
void clearStaleFiles(const std::string& finalPath);

}  // namespace base
