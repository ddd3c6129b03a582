// Small files that are read and written whole.
#pragma once

#include <optional>
#include <string>

namespace batch {

// The content of a regular file, or nothing if it cannot be read, is not one, or has more than `most` bytes. Never
// waits, should it be a pipe.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t most = std::size_t{1} << 20U);

// Puts `text` under the name `path` at once: a reader finds what was there before or all of it. Grows as
// `path`.tmp, so only one may write a name at a time. With `isSynced` it is on the disk when this returns. Throws
// base::FileError; what was there before is kept then.
void writeSmallFile(const std::string& path, const std::string& text, bool isSynced = false);

// Flushes a file, or the names in a directory, to disk. Throws base::FileError.
void syncToDisk(const std::string& path);

}  // namespace batch
