// Reads the numbers of an array from first to last, a buffer of bytes in memory at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "importers/vtk/byte_streams.h"
#include "importers/vtk/stored_array.h"

namespace importers::vtk {

class ArrayReader {
 public:
  // `file` and `array` must live as long. Throws ImportError where the array is not as long as the file says, CutOff
  // where the file ends before it does: for numbers that are not text this is known at once, so that nobody takes
  // memory for numbers that are not there.
  ArrayReader(const InputFile& file, const StoredArray& array);
  ~ArrayReader();

  // The next numbers, as many as `out` has room for. Integers are read as integers or as numbers; what is no integer,
  // or does not fit, is an ImportError when integers are asked for. CutOff where the file ends.
  void read(std::span<float> out);
  void read(std::span<double> out);
  void read(std::span<std::int64_t> out);

 private:
  class Words;

  template <typename Number>
  void readAny(std::span<Number> out);
  template <typename Number>
  void readText(std::span<Number> out);
  template <typename Number>
  void readBinary(std::span<Number> out);
  void openPlain(std::unique_ptr<ByteStream> bytes);
  void openPacked(std::unique_ptr<ByteStream> bytes);
  std::uint64_t readSize(ByteStream& bytes) const;
  std::uint64_t mostBytes() const;
  void fillBytes(std::span<std::byte> out);
  [[noreturn]] void fail(const std::string& reason) const;
  [[noreturn]] void failCut() const;

  const InputFile& file_;
  const StoredArray& array_;
  std::unique_ptr<ByteStream> bytes_;
  std::unique_ptr<Words> words_;
  std::vector<std::byte> room_;
};

// All numbers of an array, which must be integers.
std::vector<std::int64_t> readIntegers(const InputFile& file, const StoredArray& array);

}  // namespace importers::vtk
