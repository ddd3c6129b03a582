// Whether a file is still the one that was read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace batch {

struct FileStamp {
  std::string path;
  bool isThere = false;  // the numbers are 0 otherwise
  std::int64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds since 1970
  std::uint64_t inode = 0;

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// The stamp of the file that the path leads to. A file that cannot be examined counts as missing.
FileStamp stampOf(const std::string& path);
std::vector<FileStamp> stampsOf(const std::vector<std::string>& paths);

}  // namespace batch
