// Open files, and the bytes in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace base {

// An open file, closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int file = -1) : file_(file) {}
  ~Descriptor();
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;

  int get() const { return file_; }
  explicit operator bool() const { return file_ >= 0; }

 private:
  int file_;
};

// Reads from `offset` on until `out` is full or the file ends, and returns how many bytes there were. Nothing, with
// errno set, where reading fails. Any number of threads may read from one descriptor.
std::optional<std::size_t> readAt(int file, std::int64_t offset, std::span<std::byte> out);

// Writes all of `bytes` to `offset`. False, with errno set, where that fails; some of them may be written then.
bool writeAt(int file, std::int64_t offset, std::span<const std::byte> bytes);

}  // namespace base
