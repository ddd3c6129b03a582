#include "importers/line_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "importers/diagnostics.h"

namespace importers {

LineReader::LineReader(const std::string& path) : path_(path), buffer_(2 * kLongestLine) {
  // Without waiting: a pipe would block for ever.
  file_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file_ < 0) throw ImportError(path, 0, std::strerror(errno));
  struct stat status {};
  if (::fstat(file_, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(file_);
    throw ImportError(path, 0, "is not a regular file");
  }
}

LineReader::~LineReader() { ::close(file_); }

void LineReader::fail(const std::string& reason) const { throw ImportError(path_, lineNumber_, reason); }

// Moves what is left to the front and reads behind it; false when nothing came.
bool LineReader::refill() {
  std::memmove(buffer_.data(), buffer_.data() + at_, end_ - at_);
  end_ -= at_;
  at_ = 0;
  if (end_ == buffer_.size()) return false;
  ssize_t got = 0;
  do {
    got = ::read(file_, buffer_.data() + end_, buffer_.size() - end_);
  } while (got < 0 && errno == EINTR);
  if (got < 0) fail(std::strerror(errno));
  end_ += static_cast<std::size_t>(got);
  return got > 0;
}

bool LineReader::next(std::string_view& line) {
  std::size_t searched = at_;
  const char* feed = nullptr;
  for (;;) {
    feed = static_cast<const char*>(std::memchr(buffer_.data() + searched, '\n', end_ - searched));
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
  const char* const begin = buffer_.data() + at_;
  const char* end = feed != nullptr ? feed : buffer_.data() + end_;
  at_ = static_cast<std::size_t>(end - buffer_.data()) + (feed != nullptr ? 1 : 0);
  if (end != begin && end[-1] == '\r') --end;
  line = std::string_view(begin, static_cast<std::size_t>(end - begin));
  ++lineNumber_;
  terminated_ = feed != nullptr;
  return true;
}

}  // namespace importers
