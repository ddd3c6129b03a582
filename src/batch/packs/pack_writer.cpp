#include "batch/packs/pack_writer.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <span>

#include "base/file_error.h"
#include "batch/packs/pack.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

[[noreturn]] void fail(const std::string& path, const char* what, int reason) {
  throw base::FileError(path, "", fmt::format("{}: {}", what, std::strerror(reason)));
}

bool isElsewhere(int file) {
  struct flock range {};
  range.l_type = F_WRLCK;
  range.l_whence = SEEK_SET;
  return ::fcntl(file, F_OFD_SETLK, &range) != 0 && (errno == EAGAIN || errno == EACCES);
}

}  // namespace

PackWriter::PackWriter(std::string path) : path_(std::move(path)) {
  const std::filesystem::path directory = std::filesystem::path(path_).parent_path();
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) fail(directory.string(), "cannot be created", failure.value());
  file_ = base::Descriptor(::open(path_.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
  if (!file_) fail(path_, "cannot be opened", errno);
}

bool PackWriter::claim() {
  if (isElsewhere(file_.get())) return false;
  end_ = forEachEntry(file_.get(), 0, [](const PackHead&, std::uint64_t) {});
  cut();
  return true;
}

void PackWriter::cut() const {
  if (::ftruncate(file_.get(), static_cast<off_t>(end_)) != 0) fail(path_, "cannot be cut", errno);
}

void PackWriter::append(const std::string& id, const PackTexts& texts, bool isSynced) {
  const std::string entry = entryText(id, texts);
  const bool isWritten = base::writeAt(file_.get(), static_cast<std::int64_t>(end_), std::as_bytes(std::span(entry))) &&
                         (!isSynced || ::fdatasync(file_.get()) == 0);
  if (!isWritten) {
    const int reason = errno;
    cut();
    fail(path_, "cannot be written", reason);
  }
  // The name of a new file.
  if (isSynced && end_ == 0) {
    const std::filesystem::path directory = std::filesystem::path(path_).parent_path();
    syncToDisk(directory.string());
    syncToDisk(directory.parent_path().string());
  }
  end_ += entry.size();
}

}  // namespace batch
