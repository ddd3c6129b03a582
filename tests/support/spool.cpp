#include "support/spool.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/stale_files.h"
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

}  // namespace

Spool::Spool(const std::string& besidePath)
    : name_(besidePath), file_(::open(directoryOf(besidePath).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)) {
  if (!file_) {
    // Not every file system knows files without a name.
    std::string path = besidePath + base::kTemporaryMark + "XXXXXX";
    file_ = base::Descriptor(::mkostemp(path.data(), O_CLOEXEC));
    if (file_) ::unlink(path.c_str());
  }
  if (!file_) failSystem(name_, "no temporary file can be made beside it");
}

std::int64_t Spool::append(const void* bytes, std::size_t size) {
  const std::int64_t offset = size_;
  if (!base::writeAt(file_.get(), offset, {static_cast<const std::byte*>(bytes), size})) {
    failSystem(name_, "rows cannot be written");
  }
  size_ += static_cast<std::int64_t>(size);
  return offset;
}

void Spool::read(std::int64_t offset, void* bytes, std::size_t size) const {
  const auto got = base::readAt(file_.get(), offset, {static_cast<std::byte*>(bytes), size});
  if (!got) failSystem(name_, "spooled rows cannot be read");
  if (*got < size) throw StoreError(name_, "", "spooled rows are missing");
}

void Spool::release(std::int64_t offset, std::size_t size) const {
  // Where it fails the room comes back later, with the whole file.
  static_cast<void>(
      ::fallocate(file_.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, offset, static_cast<off_t>(size)));
}

}  // namespace odbstore
