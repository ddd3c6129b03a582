// The bytes of an array, one after the other, whatever they are wrapped in. Nothing here holds more than a buffer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "importers/vtk/input_file.h"

namespace importers::vtk {

class ByteStream {
 public:
  ByteStream() = default;
  virtual ~ByteStream() = default;
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;

  // Fills `out`; fewer bytes only at the end. Throws ImportError for bytes that are damaged.
  virtual std::size_t read(std::span<std::byte> out) = 0;
};

// Bytes [begin, end) of a file as they are. The file must live as long.
class FileBytes : public ByteStream {
 public:
  FileBytes(const InputFile& file, std::uint64_t begin, std::uint64_t end) : file_(file), at_(begin), end_(end) {}
  std::size_t read(std::span<std::byte> out) override;

 private:
  const InputFile& file_;
  std::uint64_t at_;
  std::uint64_t end_;
};

// What the text in bytes [begin, end) of a file stands for as base64 (RFC 4648, section 4), blanks and line ends passed
// over. A group that ends in '=' need not be the last: writers encode the sizes before an array by themselves.
class Base64Bytes : public ByteStream {
 public:
  Base64Bytes(const InputFile& file, std::uint64_t begin, std::uint64_t end);
  std::size_t read(std::span<std::byte> out) override;

 private:
  bool fill();
  bool nextGroup();
  [[noreturn]] void fail(const char* reason) const;

  const InputFile& file_;
  std::uint64_t at_;
  std::uint64_t end_;
  std::vector<unsigned char> text_;
  std::size_t next_ = 0;
  std::size_t filled_ = 0;
  std::array<std::byte, 3> group_{};
  std::size_t groupAt_ = 3;
  std::size_t groupEnd_ = 3;
};

// What blocks packed by zlib hold: block i has packedSizes[i] bytes of `packed` and unpacks to exactly `blockBytes`,
// the last one to `lastBytes`.
class UnpackedBytes : public ByteStream {
 public:
  struct Blocks {
    std::vector<std::uint64_t> packedSizes;
    std::uint64_t blockBytes = 0;
    std::uint64_t lastBytes = 0;
  };

  // `file` is named in errors.
  UnpackedBytes(std::unique_ptr<ByteStream> packed, Blocks blocks, const InputFile& file);
  ~UnpackedBytes() override;
  std::size_t read(std::span<std::byte> out) override;

 private:
  struct Inflater;
  void beginBlock();
  void endBlock();
  void inflateInto(std::span<std::byte> out);
  void refill();
  [[noreturn]] void fail(const char* reason) const;

  std::unique_ptr<ByteStream> packed_;
  Blocks blocks_;
  const InputFile& file_;
  std::unique_ptr<Inflater> inflater_;
  std::vector<std::byte> input_;
  std::size_t block_ = 0;
  std::uint64_t packedLeft_ = 0;  // of the block, not yet in input_
  std::uint64_t bytesLeft_ = 0;   // that the block still has to give
  bool isEnded_ = false;          // whether zlib has seen the end of the block
};

}  // namespace importers::vtk
