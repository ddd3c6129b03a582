// Numbers as files store them, and as the program has them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace base {

// Integers of one to eight bytes and IEEE floating-point numbers, of either byte order. The codes stand in files.
enum class NumberFormat : std::uint8_t {
  int8 = 1,
  uint8 = 2,
  int16 = 3,
  uint16 = 4,
  int32 = 5,
  uint32 = 6,
  int64 = 7,
  uint64 = 8,
  float32 = 9,
  float64 = 10,
  // The same with the highest byte first.
  int16Big = 19,
  uint16Big = 20,
  int32Big = 21,
  uint32Big = 22,
  int64Big = 23,
  uint64Big = 24,
  float32Big = 25,
  float64Big = 26
};

// Whether a code is one of these.
bool isNumberFormat(std::uint8_t code);

// Bytes of one number.
std::size_t sizeOf(NumberFormat format);
bool isFloatingPoint(NumberFormat format);

// Each converts out.size() numbers from `stored`, which holds as many. At an integer that does not fit an int
// conversion stops and its index is returned. The format must be an integer format for toInts(), a floating-point
// format otherwise.
std::optional<std::size_t> toInts(std::span<const std::byte> stored, NumberFormat format, std::span<int> out);
void toFloats(std::span<const std::byte> stored, NumberFormat format, std::span<float> out);
void toDoubles(std::span<const std::byte> stored, NumberFormat format, std::span<double> out);

}  // namespace base
