// An Exodus II file as the netCDF file that it is: what stands under which name, names in tables of characters, numbers
// as labels. Every failure is an ImportError that names the variable.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "importers/input/diagnostics.h"
#include "netcdf/netcdf_file.h"

namespace importers::exodus {

class ExodusFile {
 public:
  // An ImportError if the file is not an Exodus file.
  explicit ExodusFile(const std::string& path);

  const std::string& path() const { return file_.path(); }
  const netcdf::Description& description() const { return file_.description(); }
  std::uint64_t bytes() const { return static_cast<std::uint64_t>(file_.bytes()); }
  std::uint64_t mostBytes() const { return file_.mostBytes(); }
  SourcePlace place(const std::string& object = {}) const { return {path(), 0, {}, object}; }

  // Of a dimension; 0 where there is none.
  std::uint64_t length(std::string_view dimension) const;
  // Null where there is none.
  const netcdf::Variable* variable(const std::string& name) const;
  // Text of an attribute of the file; empty where there is none.
  std::string text(std::string_view attribute) const;
  std::vector<std::uint64_t> shapeOf(const netcdf::Variable& variable) const { return file_.shapeOf(variable); }

  // All integers of a variable; none where there is no such variable.
  std::vector<std::int64_t> integers(const std::string& variable);
  std::vector<double> reals(const std::string& variable);
  // The rows of a table of characters without what fills them up; none where there is no such variable.
  std::vector<std::string> names(const std::string& variable);

  void read(const netcdf::Variable& variable, std::span<const std::uint64_t> start,
            std::span<const std::uint64_t> count, std::span<float> to);
  void read(const netcdf::Variable& variable, std::span<const std::uint64_t> start,
            std::span<const std::uint64_t> count, std::span<double> to);

 private:
  netcdf::File file_;
  std::unordered_map<std::string, const netcdf::Variable*> variables_;
};

// Whether the description of a netCDF file is one of an Exodus file.
bool isExodus(const netcdf::Description& description);

}  // namespace importers::exodus
