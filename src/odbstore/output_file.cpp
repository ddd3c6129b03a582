#include "odbstore/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <utility>

#include "odbstore/stale_files.h"
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

// Where a name leads, whether there is a file or not.
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
  throw StoreError(name, "", "cannot be created: it is a link that leads in a circle");
}

void requireReplaceable(const std::string& target, const std::string& name) {
  struct stat status {};
  if (::stat(target.c_str(), &status) != 0) return;
  if (S_ISDIR(status.st_mode)) throw StoreError(name, "", "cannot be created: it is a directory");
  if (!S_ISREG(status.st_mode)) throw StoreError(name, "", "cannot be created: it is not a regular file");
}

Descriptor makeTemporary(std::string& path) {
  path += "XXXXXX";
  return Descriptor(::mkostemp(path.data(), O_CLOEXEC));
}

bool hasName(const Descriptor& file) {
  struct stat status {};
  return ::fstat(file.get(), &status) != 0 || status.st_nlink > 0;
}

// A temporary file that nobody takes for one that was left behind.
Descriptor makeLocked(const std::string& target, std::string& path) {
  while (true) {
    path = target + kTemporaryMark;
    Descriptor file = makeTemporary(path);
    if (!file) return file;
    holdAgainstClearing(file.get());
    // Between its making and the lock somebody may have cleared it away.
    if (hasName(file)) return file;
  }
}

// mkstemp makes private files; the result is to have the rights of any other new file.
void giveUsualRights(const Descriptor& file) {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(file.get(), 0666 & ~mask);
}

// Makes what was written survive a power failure. Some file systems cannot do that for directories and say so.
bool isSynchronised(const Descriptor& file) {
  int status = ::fsync(file.get());
  while (status != 0 && errno == EINTR) status = ::fsync(file.get());
  return status == 0 || errno == EINVAL;
}

}  // namespace

Descriptor::~Descriptor() {
  if (file_ >= 0) ::close(file_);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : file_(std::exchange(other.file_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(file_, other.file_);
  return *this;
}

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
  if (!isSynchronised(file_)) failSystem(finalPath_, "cannot be brought to the disk");
  const Descriptor directory(::open(directoryOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (std::rename(temporaryPath_.c_str(), target_.c_str()) != 0) failSystem(finalPath_, "cannot be given its name");
  published_ = true;
  // A directory that can be written but not read is no reason to fail.
  if (directory && !isSynchronised(directory)) {
    failSystem(finalPath_, "is complete, but its name may not survive a power failure");
  }
}

Spool::Spool(const std::string& besidePath)
    : name_(besidePath), file_(::open(directoryOf(besidePath).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)) {
  if (!file_) {
    // Not every file system knows files without a name.
    std::string path = besidePath + kTemporaryMark;
    file_ = makeTemporary(path);
    if (file_) ::unlink(path.c_str());
  }
  if (!file_) failSystem(name_, "no temporary file can be made beside it");
}

std::int64_t Spool::append(const void* bytes, std::size_t size) {
  const std::int64_t offset = size_;
  const char* at = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t written = ::pwrite(file_.get(), at, size, size_);
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
    const ssize_t got = ::pread(file_.get(), at, size, offset);
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
  static_cast<void>(
      ::fallocate(file_.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, offset, static_cast<off_t>(size)));
}

}  // namespace odbstore
