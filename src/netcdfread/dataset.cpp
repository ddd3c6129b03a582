#include "netcdfread/dataset.h"

#include <netcdf.h>
#include <netcdf_mem.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <new>

#include "base/file_error.h"

namespace netcdf {

namespace {

// More numbers than that are data, not a remark.
constexpr std::size_t kLongestAttribute = 4096;

void check(int status, const std::string& object) {
  if (status == NC_NOERR) return;
  if (status == NC_ENOMEM) throw std::bad_alloc();
  // The library has no word of its own for what lies beyond the end of a file in memory.
  throw base::FileError("", object, status == EPERM ? "the file ends before it" : nc_strerror(status));
}

Kind kindOf(nc_type type) {
  switch (type) {
    case NC_CHAR:
      return Kind::text;
    case NC_FLOAT:
      return Kind::single;
    case NC_DOUBLE:
      return Kind::real;
    case NC_BYTE:
    case NC_UBYTE:
    case NC_SHORT:
    case NC_USHORT:
    case NC_INT:
    case NC_UINT:
    case NC_INT64:
    case NC_UINT64:
      return Kind::integer;
    default:
      return Kind::other;
  }
}

std::string textOf(int file, int variable, const char* name, std::size_t length) {
  std::string text(length, '\0');
  check(nc_get_att_text(file, variable, name, text.data()), name);
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

// Texts of netCDF-4, which have memory of their own.
std::string stringOf(int file, int variable, const char* name) {
  char* text = nullptr;
  check(nc_get_att_string(file, variable, name, &text), name);
  std::string copied = text == nullptr ? "" : text;
  nc_free_string(1, &text);
  return copied;
}

std::vector<Attribute> attributesOf(int file, int variable, int count) {
  std::vector<Attribute> attributes;
  for (int i = 0; i < count; ++i) {
    std::array<char, NC_MAX_NAME + 1> name{};
    nc_type type = NC_NAT;
    std::size_t length = 0;
    check(nc_inq_attname(file, variable, i, name.data()), "");
    check(nc_inq_att(file, variable, name.data(), &type, &length), name.data());
    Attribute attribute;
    attribute.name = name.data();
    if (type == NC_CHAR && length <= kLongestAttribute * sizeof(double)) {
      attribute.text = textOf(file, variable, name.data(), length);
    } else if (type == NC_STRING && length == 1) {
      attribute.text = stringOf(file, variable, name.data());
    } else if (kindOf(type) != Kind::other && type != NC_CHAR && length <= kLongestAttribute) {
      attribute.numbers.resize(length);
      check(nc_get_att_double(file, variable, name.data(), attribute.numbers.data()), name.data());
    }
    attributes.push_back(std::move(attribute));
  }
  return attributes;
}

std::string formOf(int file) {
  int form = 0;
  check(nc_inq_format(file, &form), "");
  switch (form) {
    case NC_FORMAT_CLASSIC:
      return "netCDF classic";
    case NC_FORMAT_64BIT_OFFSET:
      return "netCDF 64-bit offset";
    case NC_FORMAT_CDF5:
      return "netCDF 64-bit data";
    default:
      return "netCDF-4";
  }
}

// Whether the last value of a record is there.
bool hasRecord(int file, int id, const Variable& variable, const Description& description, std::uint64_t record) {
  std::vector<std::size_t> place;
  for (const std::size_t dimension : variable.dimensions) {
    if (description.dimensions[dimension].length == 0) return true;
    place.push_back(description.dimensions[dimension].length - 1);
  }
  place.front() = record;
  double number = 0.0;
  char letter = 0;
  const int status = variable.kind == Kind::text ? nc_get_var1_text(file, id, place.data(), &letter)
                                                 : nc_get_var1_double(file, id, place.data(), &number);
  return status == NC_NOERR || status == NC_ERANGE;
}

// Records lie one behind the other, so that those that are there are the first ones.
std::uint64_t recordsOf(int file, int id, const Description& description, std::uint64_t most) {
  const Variable& variable = description.variables[static_cast<std::size_t>(id)];
  std::uint64_t there = 0;
  while (there < most) {
    const std::uint64_t middle = there + (most - there) / 2;
    if (hasRecord(file, id, variable, description, middle)) {
      there = middle + 1;
    } else {
      most = middle;
    }
  }
  return there;
}

std::uint64_t completeRecords(int file, const Description& description, int unlimited) {
  if (unlimited < 0) return 0;
  std::uint64_t records = description.dimensions[static_cast<std::size_t>(unlimited)].length;
  if (description.form == "netCDF-4") return records;
  for (std::size_t id = 0; id < description.variables.size(); ++id) {
    if (!description.variables[id].hasRecords) continue;
    records = recordsOf(file, static_cast<int>(id), description, records);
  }
  return records;
}

int readPart(int file, const Part& part, std::string& bytes) {
  const int id = static_cast<int>(part.variable);
  const std::vector<std::size_t> start(part.start.begin(), part.start.end());
  const std::vector<std::size_t> count(part.count.begin(), part.count.end());
  switch (part.kind) {
    case Kind::text:
      return nc_get_vara_text(file, id, start.data(), count.data(), bytes.data());
    case Kind::integer:
      return nc_get_vara_longlong(file, id, start.data(), count.data(), reinterpret_cast<long long*>(bytes.data()));
    case Kind::single:
      return nc_get_vara_float(file, id, start.data(), count.data(), reinterpret_cast<float*>(bytes.data()));
    case Kind::real:
      return nc_get_vara_double(file, id, start.data(), count.data(), reinterpret_cast<double*>(bytes.data()));
    case Kind::other:
      break;
  }
  return NC_EBADTYPE;
}

}  // namespace

void prepareLibrary() {
  // Filters of others are not loaded, settings of the user not read.
  ::setenv("HDF5_PLUGIN_PRELOAD", "::", 1);
  ::setenv("NCRCENV_IGNORE", "1", 1);
  check(nc_initialize(), "");
}

Dataset::Dataset(std::span<const std::byte> bytes) {
  // Opened without NC_WRITE, the memory is not written to.
  const int status = nc_open_mem("results", NC_NOWRITE, bytes.size(), const_cast<std::byte*>(bytes.data()), &id_);
  if (status == EPERM) throw base::FileError("", "", "the file ends inside its description");
  check(status, "");
}

Description Dataset::describe() const {
  Description description;
  description.form = formOf(id_);
  int dimensions = 0;
  int variables = 0;
  int attributes = 0;
  int unlimited = -1;
  check(nc_inq(id_, &dimensions, &variables, &attributes, &unlimited), "");
  for (int i = 0; i < dimensions; ++i) {
    std::array<char, NC_MAX_NAME + 1> name{};
    std::size_t length = 0;
    check(nc_inq_dim(id_, i, name.data(), &length), "");
    description.dimensions.push_back({name.data(), length});
  }
  description.attributes = attributesOf(id_, NC_GLOBAL, attributes);
  for (int i = 0; i < variables; ++i) {
    std::array<char, NC_MAX_NAME + 1> name{};
    nc_type type = NC_NAT;
    int count = 0;
    std::array<int, NC_MAX_VAR_DIMS> of{};
    check(nc_inq_var(id_, i, name.data(), &type, &count, of.data(), &attributes), "");
    Variable variable = {name.data(), kindOf(type), {}, attributesOf(id_, i, attributes)};
    for (int d = 0; d < count; ++d) {
      const auto dimension = static_cast<std::size_t>(of[static_cast<std::size_t>(d)]);
      if (dimension >= description.dimensions.size())
        throw base::FileError("", variable.name, "has dimensions of a group");
      variable.dimensions.push_back(dimension);
    }
    variable.hasRecords = count > 0 && unlimited >= 0 && of[0] == unlimited;
    description.variables.push_back(std::move(variable));
  }
  description.completeRecords = completeRecords(id_, description, unlimited);
  return description;
}

std::string Dataset::read(const Part& part) const {
  int variables = 0;
  int dimensions = 0;
  std::array<char, NC_MAX_NAME + 1> name{};
  check(nc_inq_nvars(id_, &variables), "");
  if (part.variable >= static_cast<std::uint64_t>(variables)) throw base::FileError("", "", "has no such variable");
  check(nc_inq_varname(id_, static_cast<int>(part.variable), name.data()), "");
  check(nc_inq_varndims(id_, static_cast<int>(part.variable), &dimensions), name.data());
  const auto rank = static_cast<std::size_t>(dimensions);
  if (part.start.size() != rank || part.count.size() != rank)
    throw base::FileError("", name.data(), "has another shape");
  std::size_t bytes = sizeOf(part.kind);
  for (const std::uint64_t count : part.count) {
    if (__builtin_mul_overflow(bytes, count, &bytes)) throw std::bad_alloc();
  }
  std::string values(bytes, '\0');
  const int status = readPart(id_, part, values);
  // A double beyond the range of floats becomes an infinity.
  if (status != NC_ERANGE || part.kind == Kind::integer) check(status, name.data());
  return values;
}

}  // namespace netcdf
