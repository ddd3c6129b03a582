// Temporary files of writers that were killed: how they are told from those of writers at work, and cleared away.
#pragma once

#include <string>

namespace base {

// What stands between a final name and the six characters that make a temporary name of it.
constexpr const char* kTemporaryMark = ".tmp.";

// Keeps others from clearing the open file away, as long as it is open. On a file system without locks nothing is
// kept, and nothing is cleared.
void holdAgainstClearing(int file);

// Removes the temporary files of `finalPath` that nobody holds. What cannot be removed stays, silently.
void clearStaleFiles(const std::string& finalPath);

}  // namespace base
