// One file of results, read at any place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "base/descriptor.h"
#include "importers/input/diagnostics.h"

namespace importers::vtk {

// A file that ends before what it says it holds.
class CutOff : public ImportError {
 public:
  using ImportError::ImportError;
};

// So much is read at a time.
inline constexpr std::size_t kBufferBytes = std::size_t{1} << 18U;

// An array may say that it has so many components.
inline constexpr std::uint64_t kMostComponents = 1U << 20U;

class InputFile {
 public:
  // Throws ImportError where the file cannot be opened or is no regular file; a pipe is not waited for.
  explicit InputFile(const std::string& path);

  const std::string& path() const { return path_; }
  std::uint64_t size() const { return size_; }

  // Fills `out` from `offset` on and returns how many bytes there were, fewer at the end of the file. Throws
  // ImportError for a read error.
  std::size_t read(std::uint64_t offset, std::span<std::byte> out) const;

  // Memory that may be taken for what is unpacked out of this file: in proportion to its size.
  std::uint64_t mostMemory() const { return (std::uint64_t{64} << 20U) + 16 * size_; }

 private:
  std::string path_;
  base::Descriptor file_;
  std::uint64_t size_ = 0;
};

}  // namespace importers::vtk
