#include "batch/state/file_stamp.h"

#include <sys/stat.h>

namespace batch {

FileStamp stampOf(const std::string& path) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {path};
  return {path, true, status.st_size, status.st_mtim.tv_sec * kSecond + status.st_mtim.tv_nsec, status.st_ino};
}

std::vector<FileStamp> stampsOf(const std::vector<std::string>& paths) {
  std::vector<FileStamp> stamps;
  stamps.reserve(paths.size());
  for (const std::string& path : paths) stamps.push_back(stampOf(path));
  return stamps;
}

}  // namespace batch
