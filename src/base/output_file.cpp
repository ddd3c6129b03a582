#include "base/output_file.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/file_error.h"
#include "base/stale_files.h"

namespace base {

namespace {

std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

[[noreturn]] void failSystem(const std::string& path, const std::string& what) {
  throw FileError(path, "", fmt::format("{}: {}", what, std::strerror(errno)));
}

// The target of a name, which need not exist.
std::string followLinks(const std::string& name) {
  constexpr int kMostLinks = 40;  // as the kernel has it
  std::string path = name;
  for (int i = 0; i < kMostLinks; ++i) {
    std::string link(PATH_MAX, '\0');
    const ssize_t length = ::readlink(path.c_str(), link.data(), link.size());
    if (length < 0) return path;
    link.resize(static_cast<std::size_t>(length));
    path = link.front() == '/' ? link : directoryOf(path) + "/" + link;
  }
  throw FileError(name, "", "cannot be created: its links form a circle");
}

void requireReplaceable(const std::string& target, const std::string& name) {
  struct stat status {};
  if (::stat(target.c_str(), &status) != 0) return;
  if (S_ISDIR(status.st_mode)) throw FileError(name, "", "cannot be created: it is a directory");
  if (!S_ISREG(status.st_mode)) throw FileError(name, "", "cannot be created: it is not a regular file");
}

Descriptor makeTemporary(std::string& path) {
  path += "XXXXXX";
  return Descriptor(::mkostemp(path.data(), O_CLOEXEC));
}

bool hasName(const Descriptor& file) {
  struct stat status {};
  return ::fstat(file.get(), &status) != 0 || status.st_nlink > 0;
}

// A temporary file, locked so that nobody removes it as stale.
Descriptor makeLocked(const std::string& target, std::string& path) {
  while (true) {
    path = target + kTemporaryMark;
    Descriptor file = makeTemporary(path);
    if (!file) return file;
    holdAgainstClearing(file.get());
    // Another process may have removed it before it was locked.
    if (hasName(file)) return file;
  }
}

// mkstemp makes private files; the result must have the permissions of any other new file.
void giveUsualRights(const Descriptor& file) {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(file.get(), 0666 & ~mask);
}

// Makes written data survive a power failure. Some file systems cannot do that for directories and say so.
bool isSynchronised(const Descriptor& file) {
  int status = ::fsync(file.get());
  while (status != 0 && errno == EINTR) status = ::fsync(file.get());
  return status == 0 || errno == EINVAL;
}

}  // namespace

OutputFile::OutputFile(const std::string& finalPath) : finalPath_(finalPath), target_(followLinks(finalPath)) {
  requireReplaceable(target_, finalPath_);
  clearStaleFiles(target_);
  file_ = makeLocked(target_, temporaryPath_);
  if (!file_) failSystem(finalPath_, "cannot be created");
  giveUsualRights(file_);
}

OutputFile::~OutputFile() {
  if (!published_) ::unlink(temporaryPath_.c_str());
}

void OutputFile::publish() {
  if (!isSynchronised(file_)) failSystem(finalPath_, "cannot be written to disk");
  const Descriptor directory(::open(directoryOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (std::rename(temporaryPath_.c_str(), target_.c_str()) != 0)
    failSystem(finalPath_, "cannot be renamed to its final name");
  published_ = true;
  // A directory that can be written but not read is no reason to fail.
  if (directory && !isSynchronised(directory)) {
    failSystem(finalPath_, "is complete, but its name may not survive a power failure");
  }
}

}  // namespace base
