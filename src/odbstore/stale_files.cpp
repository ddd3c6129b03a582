#include "odbstore/stale_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>

#include "odbstore/output_file.h"

namespace odbstore {

namespace {

constexpr std::size_t kRandomCharacters = 6;

// Locks of this kind belong to the open file, and HDF5's own locks do not meet them.
bool lock(int file, short kind) {
  struct flock range {};
  range.l_type = kind;
  range.l_whence = SEEK_SET;
  return ::fcntl(file, F_OFD_SETLK, &range) == 0;
}

bool isTemporaryNameOf(std::string_view finalName, std::string_view name) {
  if (!name.starts_with(finalName)) return false;
  name.remove_prefix(finalName.size());
  if (!name.starts_with(kTemporaryMark)) return false;
  name.remove_prefix(std::string_view(kTemporaryMark).size());
  return name.size() == kRandomCharacters &&
         std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
}

void clearUnlessHeld(const std::string& path) {
  // Without waiting, as it may be anything that bears such a name.
  const Descriptor file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (lock(file.get(), F_WRLCK)) ::unlink(path.c_str());
}

}  // namespace

void holdAgainstClearing(int file) { static_cast<void>(lock(file, F_RDLCK)); }

void clearStaleFiles(const std::string& finalPath) {
  const std::filesystem::path path = finalPath;
  const std::string finalName = path.filename();
  const std::filesystem::path directory = path.has_parent_path() ? path.parent_path() : ".";
  std::error_code failure;
  std::filesystem::directory_iterator at(directory, failure);
  for (; !failure && at != std::filesystem::directory_iterator(); at.increment(failure)) {
    const std::string name = at->path().filename();
    if (isTemporaryNameOf(finalName, name)) clearUnlessHeld(at->path());
  }
}

}  // namespace odbstore
