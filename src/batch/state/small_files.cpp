#include "batch/state/small_files.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>

#include "base/descriptor.h"
#include "base/file_error.h"

namespace batch {

namespace {

[[noreturn]] void fail(const std::string& path, const char* what) {
  throw base::FileError(path, "", fmt::format("{}: {}", what, std::strerror(errno)));
}

bool isSynchronised(int file) {
  int status = ::fsync(file);
  while (status != 0 && errno == EINTR) status = ::fsync(file);
  // Some file systems cannot do it for directories and say so.
  return status == 0 || errno == EINVAL;
}

std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool writeNew(const std::string& path, const std::string& text, bool isSynced) {
  const base::Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666));
  return file && base::writeAt(file.get(), 0, std::as_bytes(std::span(text))) &&
         (!isSynced || isSynchronised(file.get()));
}

}  // namespace

std::optional<std::string> readSmallFile(const std::string& path, std::size_t most) {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (static_cast<std::uint64_t>(status.st_size) > most) return std::nullopt;
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  const std::optional<std::size_t> got = base::readAt(file.get(), 0, std::as_writable_bytes(std::span(text)));
  if (!got) return std::nullopt;
  text.resize(*got);
  return text;
}

void writeSmallFile(const std::string& path, const std::string& text, bool isSynced) {
  const std::string temporary = path + ".tmp";
  if (!writeNew(temporary, text, isSynced) || std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int reason = errno;
    ::unlink(temporary.c_str());
    errno = reason;
    fail(path, "cannot be written");
  }
  if (isSynced) syncToDisk(directoryOf(path));
}

void syncToDisk(const std::string& path) {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file || !isSynchronised(file.get())) fail(path, "cannot be written to disk");
}

}  // namespace batch
