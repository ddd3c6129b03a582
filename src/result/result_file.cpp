#include "result/result_file.h"

#include <algorithm>

#include "result/number_format.h"

namespace {

#ifdef KOLVEX_CRLF_RECORDS
constexpr const char* kLineEnd = "\r\n";
#else
constexpr const char* kLineEnd = "\n";
#endif

}  // namespace

LineEndBuffer::int_type LineEndBuffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  const char character = traits_type::to_char_type(c);
  return xsputn(&character, 1) == 1 ? c : traits_type::eof();
}

std::streamsize LineEndBuffer::xsputn(const char* text, std::streamsize count) {
  const char* const end = text + count;
  for (const char* at = text; at != end;) {
    const char* const feed = std::find(at, end, '\n');
    if (target_.sputn(at, feed - at) != feed - at) return at - text;
    if (feed == end) break;
    const auto length = static_cast<std::streamsize>(lineEnd_.size());
    if (target_.sputn(lineEnd_.data(), length) != length) return feed - text;
    at = feed + 1;
  }
  return count;
}

ResultFile::ResultFile(const std::string& path) : ResultFile(path, kLineEnd) {}

ResultFile::ResultFile(const std::string& path, const std::string& lineEnd)
    : std::ostream(nullptr), lines_(file_, lineEnd) {
  imbue(resultLocale());
  rdbuf(&lines_);
  if (file_.open(path, std::ios::out | std::ios::trunc) == nullptr) setstate(std::ios::badbit);
}

bool ResultFile::close() {
  flush();
  const bool closed = file_.close() != nullptr;
  return good() && closed;
}
