#include "batch/state/params_sum.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <span>

#include "base/descriptor.h"
#include "odbstore/crc32c.h"

namespace batch {

std::optional<ParamsSum> sumOfParams(const std::string& path) {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  ParamsSum params;
  std::array<std::byte, std::size_t{1} << 16U> piece;
  while (true) {
    const auto got = base::readAt(file.get(), static_cast<std::int64_t>(params.length), piece);
    if (!got) return std::nullopt;
    params.sum = odbstore::crc32c(std::span(piece).first(*got), params.sum);
    params.length += *got;
    if (*got < piece.size()) return params;
  }
}

ParamsSum sumOfText(const std::string& text) { return {text.size(), odbstore::crc32c(std::as_bytes(std::span(text)))}; }

}  // namespace batch
