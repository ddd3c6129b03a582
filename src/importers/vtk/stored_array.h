// Arrays of numbers in the files of VTK: where they stand and how they are written, without the numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace importers::vtk {

enum class NumberType { int8, uint8, int16, uint16, int32, uint32, int64, uint64, float32, float64 };

// Bytes of one number.
std::size_t sizeOf(NumberType type);
bool isInteger(NumberType type);

// By the names that XML files use, "Float64"; nothing for any other word.
std::optional<NumberType> typeOfXml(std::string_view word);
// By those of legacy files, "double", in any case; nothing for any other word, "bit" and "string" among them.
std::optional<NumberType> typeOfLegacy(std::string_view word);

enum class Encoding { text, raw, base64 };

struct StoredArray {
  std::string name;
  NumberType type = NumberType::float32;
  std::uint64_t tuples = 0;
  std::size_t components = 1;               // of each tuple
  std::vector<std::string> componentNames;  // empty where the file gives none
  std::int64_t line = 0;                    // where the file says that it is there; 0 where lines do not count

  Encoding encoding = Encoding::text;
  bool isBigEndian = false;
  std::size_t headerBytes = 0;  // of each size that stands before the numbers: 0 for none, 4 or 8
  bool isPacked = false;        // by zlib, in blocks
  std::uint64_t begin = 0;      // bytes of the file that it lies in; of an appended one the section ends at `end`
  std::uint64_t end = 0;

  // How many numbers; every reader has checked that it fits into 60 bits.
  std::uint64_t numbers() const { return tuples * components; }
};

// Numbers of one array are never more than this.
inline constexpr std::uint64_t kMostNumbers = std::uint64_t{1} << 60U;

}  // namespace importers::vtk
