#include "odbstore/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "odbstore/store_error.h"

namespace odbstore {

namespace {

std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

[[noreturn]] void failSystem(const std::string& path, const std::string& what) {
  throw StoreError(path, "", fmt::format("{}: {}", what, std::strerror(errno)));
}

// Makes what was written under `path`, a file or a directory, survive a power failure.
void syncPath(const std::string& path, const std::string& name) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) failSystem(name, "cannot be opened to be synchronised");
  const int status = ::fsync(file);
  const int error = errno;
  ::close(file);
  errno = error;
  // Some file systems cannot synchronise directories and say so.
  if (status != 0 && error != EINVAL) failSystem(name, "cannot be brought to the disk");
}

int makeTemporary(std::string& path) {
  path += ".XXXXXX";
  return ::mkostemp(path.data(), O_CLOEXEC);
}

}  // namespace

OutputFile::OutputFile(const std::string& finalPath) : finalPath_(finalPath), temporaryPath_(finalPath + ".tmp") {
  const int file = makeTemporary(temporaryPath_);
  if (file < 0) failSystem(finalPath_, "cannot be created");
  ::close(file);
  // mkstemp makes private files; the result is to have the rights of any other new file.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::chmod(temporaryPath_.c_str(), 0666 & ~mask);
}

OutputFile::~OutputFile() {
  if (!published_) ::unlink(temporaryPath_.c_str());
}

void OutputFile::publish() {
  syncPath(temporaryPath_, finalPath_);
  if (std::rename(temporaryPath_.c_str(), finalPath_.c_str()) != 0) failSystem(finalPath_, "cannot be given its name");
  published_ = true;
  syncPath(directoryOf(finalPath_), finalPath_);
}

Spool::Spool(const std::string& besidePath) : name_(besidePath) {
  file_ = ::open(directoryOf(besidePath).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (file_ < 0) {
    // Not every file system knows files without a name.
    std::string path = besidePath + ".spool";
    file_ = makeTemporary(path);
    if (file_ >= 0) ::unlink(path.c_str());
  }
  if (file_ < 0) failSystem(name_, "no temporary file can be made beside it");
}

Spool::~Spool() { ::close(file_); }

std::int64_t Spool::append(const void* bytes, std::size_t size) {
  const std::int64_t offset = size_;
  const char* at = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t written = ::pwrite(file_, at, size, size_);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) failSystem(name_, "rows cannot be written");
    at += written;
    size -= static_cast<std::size_t>(written);
    size_ += written;
  }
  return offset;
}

void Spool::read(std::int64_t offset, void* bytes, std::size_t size) const {
  char* at = static_cast<char*>(bytes);
  while (size > 0) {
    const ssize_t got = ::pread(file_, at, size, offset);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failSystem(name_, "spooled rows cannot be read");
    if (got == 0) throw StoreError(name_, "", "spooled rows are missing");
    at += got;
    size -= static_cast<std::size_t>(got);
    offset += got;
  }
}

void Spool::release(std::int64_t offset, std::size_t size) const {
  // Where it fails the room comes back later, with the whole file.
  static_cast<void>(::fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, offset, static_cast<off_t>(size)));
}

}  // namespace odbstore
