// What a netCDF file has, without the values of its variables.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace netcdf {

// How values are handed over: characters, integers as int64, others as they are.
enum class Kind : std::uint8_t { text, integer, single, real, other };

struct Attribute {
  std::string name;
  std::string text;             // of one of characters
  std::vector<double> numbers;  // of another one; empty for long ones
};

struct Dimension {
  std::string name;
  std::uint64_t length = 0;
};

struct Variable {
  std::string name;
  Kind kind = Kind::other;
  std::vector<std::size_t> dimensions;  // places in the description
  std::vector<Attribute> attributes;
  bool hasRecords = false;  // whether the first dimension is the one that grows
};

struct Description {
  std::string form;  // "netCDF classic", "netCDF 64-bit offset", "netCDF 64-bit data" or "netCDF-4"
  std::vector<Dimension> dimensions;
  std::vector<Attribute> attributes;
  std::vector<Variable> variables;
  // How many of its records are in the file with all their values: fewer than the dimension says where it is cut off.
  std::uint64_t completeRecords = 0;

  // Null where there is none of that name.
  const Dimension* dimension(std::string_view name) const;
  const Variable* variable(std::string_view name) const;
};

const Attribute* attributeOf(const std::vector<Attribute>& attributes, std::string_view name);

std::string packed(const Description& description);
// Throws std::runtime_error for what packed() has not made.
Description unpacked(std::string_view bytes);

// Values of a variable: a part of it, one number for each dimension.
struct Part {
  std::uint64_t variable = 0;  // place in the description
  Kind kind = Kind::real;      // as which its values are handed over
  std::vector<std::uint64_t> start;
  std::vector<std::uint64_t> count;
};

// Requests to the program that reads: nothing for the description, else a part.
std::string packed(const Part& part);
Part unpackedPart(std::string_view bytes);

// Bytes of a value of a kind.
constexpr std::size_t sizeOf(Kind kind) {
  return kind == Kind::text ? 1 : kind == Kind::single ? sizeof(float) : sizeof(double);
}

}  // namespace netcdf
