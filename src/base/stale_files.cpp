#include "base/stale_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>

#include "base/output_file.h"

namespace base {

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
  // Without waiting: anything may have such a name, also a pipe.
  const Descriptor file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (lock(file.get(), F_WRLCK)) ::unlink(path.c_str());
}

}  // namespace

void holdAgainstClearing(int file) { static_cast<void>(lock(file, F_RDLCK)); }

void clearStaleFiles(const std::string& finalPath) {
  const std::size_t slash = finalPath.rfind('/');
  const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
  const std::string directory = finalPath.substr(0, begin);
  const std::string_view finalName = std::string_view(finalPath).substr(begin);
  // The standard library's iterator would end the process when memory is short.
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(directory.empty() ? "." : directory.c_str()), ::closedir);
  if (!entries) return;
  while (const dirent* entry = ::readdir(entries.get())) {
    if (isTemporaryNameOf(finalName, entry->d_name)) clearUnlessHeld(directory + entry->d_name);
  }
}

}  // namespace base
