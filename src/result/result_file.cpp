#include "result/result_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace {

#ifdef KOLVEX_CRLF_RECORDS
constexpr const char* kLineEnd = "\r\n";
#else
constexpr const char* kLineEnd = "\n";
#endif

// More than this is written even if nobody flushes.
constexpr std::size_t kMostCollected = std::size_t{64} << 10U;

bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

LineBuffer::LineBuffer(const std::string& path, std::string lineEnd)
    : LineBuffer(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), std::move(lineEnd)) {}

LineBuffer::LineBuffer(int file, std::string lineEnd) : file_(file), lineEnd_(std::move(lineEnd)) {}

bool LineBuffer::close() {
  if (!isOpen()) return false;
  const bool isWritten = sync() == 0;
  const bool isClosed = ::close(file_) == 0;
  file_ = -1;
  return isWritten && isClosed;
}

LineBuffer::int_type LineBuffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  const char character = traits_type::to_char_type(c);
  return xsputn(&character, 1) == 1 ? c : traits_type::eof();
}

std::streamsize LineBuffer::xsputn(const char* text, std::streamsize count) {
  if (!isOpen()) return 0;
  const char* const end = text + count;
  for (const char* at = text; at != end;) {
    const char* const feed = lineEnd_ == "\n" ? end : std::find(at, end, '\n');
    collected_.append(at, feed);
    at = feed;
    if (at == end) break;
    collected_ += lineEnd_;
    ++at;
  }
  if (collected_.size() > kMostCollected && sync() != 0) return 0;
  return count;
}

int LineBuffer::sync() {
  if (!isOpen()) return -1;
  const bool isWritten = writeAll(file_, collected_);
  collected_.clear();
  return isWritten ? 0 : -1;
}

ResultFile::ResultFile(const std::string& path) : ResultFile(path, kLineEnd) {}

ResultFile::ResultFile(const std::string& path, const std::string& lineEnd)
    : std::ostream(nullptr), lines_(path, lineEnd) {
  begin();
}

ResultFile::ResultFile(int file) : std::ostream(nullptr), lines_(file, kLineEnd) { begin(); }

void ResultFile::begin() {
  rdbuf(&lines_);
  if (!lines_.isOpen()) setstate(std::ios::badbit);
}

bool ResultFile::close() {
  const bool isClosed = lines_.close();
  return good() && isClosed;
}
