#include "tables/text_output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/file_error.h"

namespace tables {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 18U;

}  // namespace

void TextOutput::write(std::string_view text) {
  collected_ += text;
  if (collected_.size() >= kPiece) flush();
}

void TextOutput::flush() {
  std::string_view left = collected_;
  while (!left.empty()) {
    const ssize_t written = ::write(file_, left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw base::FileError(name_, "", fmt::format("cannot be written: {}", std::strerror(errno)));
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  collected_.clear();
}

}  // namespace tables
