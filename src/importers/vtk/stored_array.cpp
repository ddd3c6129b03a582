#include "importers/vtk/stored_array.h"

#include <algorithm>
#include <array>

#include "importers/input/text_fields.h"

namespace importers::vtk {

namespace {

struct TypeWord {
  std::string_view word;
  NumberType type;
};

constexpr std::array<TypeWord, 10> kXmlWords = {{
    {"Int8", NumberType::int8},
    {"UInt8", NumberType::uint8},
    {"Int16", NumberType::int16},
    {"UInt16", NumberType::uint16},
    {"Int32", NumberType::int32},
    {"UInt32", NumberType::uint32},
    {"Int64", NumberType::int64},
    {"UInt64", NumberType::uint64},
    {"Float32", NumberType::float32},
    {"Float64", NumberType::float64},
}};

// A long is taken for that of the 64-bit machines on which files are written today, as VTK itself does there. The type
// of ids is written as int.
constexpr std::array<TypeWord, 21> kLegacyWords = {{
    {"CHAR", NumberType::int8},
    {"SIGNED_CHAR", NumberType::int8},
    {"UNSIGNED_CHAR", NumberType::uint8},
    {"SHORT", NumberType::int16},
    {"UNSIGNED_SHORT", NumberType::uint16},
    {"INT", NumberType::int32},
    {"VTKIDTYPE", NumberType::int32},
    {"UNSIGNED_INT", NumberType::uint32},
    {"LONG", NumberType::int64},
    {"UNSIGNED_LONG", NumberType::uint64},
    {"FLOAT", NumberType::float32},
    {"DOUBLE", NumberType::float64},
    {"VTKTYPEINT8", NumberType::int8},
    {"VTKTYPEUINT8", NumberType::uint8},
    {"VTKTYPEINT16", NumberType::int16},
    {"VTKTYPEUINT16", NumberType::uint16},
    {"VTKTYPEINT32", NumberType::int32},
    {"VTKTYPEUINT32", NumberType::uint32},
    {"VTKTYPEINT64", NumberType::int64},
    {"VTKTYPEUINT64", NumberType::uint64},
    {"LONG_LONG", NumberType::int64},
}};

template <std::size_t kCount>
std::optional<NumberType> find(const std::array<TypeWord, kCount>& words, std::string_view word) {
  const auto found = std::find_if(words.begin(), words.end(), [&](const TypeWord& one) { return one.word == word; });
  return found == words.end() ? std::nullopt : std::optional(found->type);
}

}  // namespace

std::size_t sizeOf(NumberType type) {
  switch (type) {
    case NumberType::int8:
    case NumberType::uint8:
      return 1;
    case NumberType::int16:
    case NumberType::uint16:
      return 2;
    case NumberType::int32:
    case NumberType::uint32:
    case NumberType::float32:
      return 4;
    default:
      return 8;
  }
}

bool isInteger(NumberType type) { return type != NumberType::float32 && type != NumberType::float64; }

std::optional<NumberType> typeOfXml(std::string_view word) { return find(kXmlWords, word); }

std::optional<NumberType> typeOfLegacy(std::string_view word) { return find(kLegacyWords, upperCased(word)); }

}  // namespace importers::vtk
