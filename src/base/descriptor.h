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

// Reads from `offset` on until `out` is full or the file ends, and returns the number of bytes read. Nothing, with
// errno set, if reading fails. Thread-safe.
std::optional<std::size_t> readAt(int file, std::int64_t offset, std::span<std::byte> out);

// Writes all of `bytes` at `offset`. False, with errno set, on failure; part of them may have been written.
bool writeAt(int file, std::int64_t offset, std::span<const std::byte> bytes);

}  // namespace base
