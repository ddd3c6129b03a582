#include "base/descriptor.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace base {

Descriptor::~Descriptor() {
  if (file_ >= 0) ::close(file_);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : file_(std::exchange(other.file_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(file_, other.file_);
  return *this;
}

std::optional<std::size_t> readAt(int file, std::int64_t offset, std::span<std::byte> out) {
  std::size_t done = 0;
  while (done < out.size()) {
    const ssize_t got = ::pread(file, out.data() + done, out.size() - done, offset + static_cast<std::int64_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

bool writeAt(int file, std::int64_t offset, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(file, bytes.data(), bytes.size(), offset);
    if (written < 0 && errno == EINTR) continue;
    // Nothing was written and there is no error: trying again would never end.
    if (written == 0) errno = EIO;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += written;
  }
  return true;
}

}  // namespace base
