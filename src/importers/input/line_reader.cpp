#include "importers/input/line_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "importers/input/diagnostics.h"

namespace importers {

namespace {

constexpr std::size_t kBufferBytes = 2 * LineReader::kLongestLine;

// As much as stays in the processor's cache until it has been examined.
constexpr std::size_t kPieceBytes = std::size_t{1} << 18U;

}  // namespace

LineReader::LineReader(const std::string& path)
    : path_(path), buffer_(std::make_unique_for_overwrite<char[]>(kBufferBytes)) {
  // Without waiting: a pipe would block for ever.
  file_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file_ < 0) throw ImportError(path, 0, std::strerror(errno));
  struct stat status {};
  const int failure = ::fstat(file_, &status) != 0 ? errno : 0;
  if (failure != 0 || !S_ISREG(status.st_mode)) {
    ::close(file_);
    throw ImportError(path, 0, failure != 0 ? std::strerror(failure) : "is not a regular file");
  }
  size_ = static_cast<std::uint64_t>(status.st_size);
}

LineReader::~LineReader() { ::close(file_); }

void LineReader::fail(const std::string& reason) const {
  SourcePlace here = place();
  if (hasBytes_) here.byte = offset();
  throw ImportError(std::move(here), reason);
}

// Reads on into `to`; 0 at the end of the file.
std::size_t LineReader::readSome(char* to, std::size_t size) {
  ssize_t got = 0;
  do {
    got = ::read(file_, to, size);
  } while (got < 0 && errno == EINTR);
  if (got < 0) fail(std::strerror(errno));
  readTo_ += static_cast<std::uint64_t>(got);
  return static_cast<std::size_t>(got);
}

// Moves what is left to the front and reads after it; false when nothing came.
bool LineReader::refill() {
  std::memmove(buffer_.get(), buffer_.get() + at_, end_ - at_);
  end_ -= at_;
  at_ = 0;
  if (end_ == kBufferBytes) return false;
  const std::size_t got = readSome(buffer_.get() + end_, std::min(kPieceBytes, kBufferBytes - end_));
  end_ += got;
  return got > 0;
}

bool LineReader::readBytes(void* to, std::size_t size) {
  if (size > bytesLeft()) return false;
  hasBytes_ = true;
  auto* out = static_cast<char*>(to);
  const std::size_t buffered = std::min(size, end_ - at_);
  std::memcpy(out, buffer_.get() + at_, buffered);
  at_ += buffered;
  out += buffered;
  size -= buffered;
  // Little comes through the buffer, much directly.
  while (size >= kLongestLine) {
    const std::size_t got = readSome(out, size);
    if (got == 0) return false;
    out += got;
    size -= got;
  }
  while (end_ - at_ < size) {
    if (!refill()) return false;
  }
  std::memcpy(out, buffer_.get() + at_, size);
  at_ += size;
  return true;
}

std::string_view LineReader::ahead(std::size_t least) {
  while (end_ - at_ < least && refill()) {
  }
  return {buffer_.get() + at_, end_ - at_};
}

std::string_view LineReader::peekAt(std::uint64_t distance, std::size_t size) {
  while (end_ - at_ < distance + size && distance + size <= kLongestLine) {
    if (!refill()) break;
  }
  if (distance + size <= end_ - at_ || distance + size <= kLongestLine) {
    const std::size_t begin = std::min<std::size_t>(distance, end_ - at_);
    return std::string_view(buffer_.get() + at_, end_ - at_).substr(begin, size);
  }
  beyond_.resize(size);
  for (;;) {
    const ssize_t got = ::pread(file_, beyond_.data(), size, static_cast<off_t>(offset() + distance));
    if (got >= 0) return {beyond_.data(), static_cast<std::size_t>(got)};
    if (errno != EINTR) fail(std::strerror(errno));
  }
}

void LineReader::skipBytes(std::uint64_t size, std::int64_t lines) {
  lineNumber_ += lines;
  if (lines == 0 && size > 0) hasBytes_ = true;
  if (size <= end_ - at_) {
    at_ += size;
    return;
  }
  const std::uint64_t target = offset() + size;
  if (::lseek(file_, static_cast<off_t>(target), SEEK_SET) < 0) fail(std::strerror(errno));
  readTo_ = target;
  at_ = end_ = 0;
}

bool LineReader::next(std::string_view& line) {
  std::size_t searched = at_;
  const char* feed = nullptr;
  for (;;) {
    feed = static_cast<const char*>(std::memchr(buffer_.get() + searched, '\n', end_ - searched));
    if (feed != nullptr) break;
    const std::size_t pending = end_ - at_;
    if (pending > kLongestLine) {
      ++lineNumber_;
      fail("the line is too long");
    }
    if (!refill()) break;
    searched = at_ + pending;
  }
  if (feed == nullptr && at_ == end_) return false;
  const char* const begin = buffer_.get() + at_;
  const char* end = feed != nullptr ? feed : buffer_.get() + end_;
  at_ = static_cast<std::size_t>(end - buffer_.get()) + (feed != nullptr ? 1 : 0);
  if (end != begin && end[-1] == '\r') --end;
  line = std::string_view(begin, static_cast<std::size_t>(end - begin));
  ++lineNumber_;
  terminated_ = feed != nullptr;
  return true;
}

}  // namespace importers
