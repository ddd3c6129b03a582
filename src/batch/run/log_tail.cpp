#include "batch/run/log_tail.h"

#include <sys/stat.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "base/descriptor.h"

namespace batch {

namespace {

constexpr std::int64_t kTail = 4096;
constexpr std::size_t kMostOfLine = 500;
constexpr std::string_view kClosingLine = "ODB Application exited with error(s)";
constexpr std::string_view kErrorMark = "**ERROR** ";

std::string tailOf(int log) {
  struct stat status {};
  if (::fstat(log, &status) != 0) return {};
  const std::int64_t length = std::min<std::int64_t>(status.st_size, kTail);
  std::string tail(static_cast<std::size_t>(length), '\0');
  const auto got = base::readAt(log, status.st_size - length, std::as_writable_bytes(std::span(tail)));
  tail.resize(got.value_or(0));
  return tail;
}

}  // namespace

std::string lastWords(int log) {
  const std::string tail = tailOf(log);
  std::string_view left = tail;
  while (!left.empty()) {
    const std::size_t end = left.rfind('\n');
    std::string_view line = end == std::string_view::npos ? left : left.substr(end + 1);
    left = end == std::string_view::npos ? std::string_view() : left.substr(0, end);
    if (line.empty() || line == kClosingLine) continue;
    if (line.starts_with(kErrorMark)) line.remove_prefix(kErrorMark.size());
    return std::string(line.substr(0, kMostOfLine));
  }
  return {};
}

}  // namespace batch
