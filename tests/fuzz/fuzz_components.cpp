// Names of components, and the descriptions of netCDF files that the program which reads them answers with.
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "importers/exodus/point_names.h"
#include "importers/run/field_shapes.h"
#include "netcdf/description.h"

namespace {

// Names end with a line.
std::vector<std::string> namesIn(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    names.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return names;
}

// Every component is of one field, and of one only.
void checkShapes(const std::vector<std::string>& names, const importers::ShapeChoice& choice, bool isPlane) {
  std::vector<importers::NamedComponent> components;
  for (const std::string& name : names) components.push_back({name});
  std::vector<int> used(names.size(), 0);
  for (const importers::ShapedField& field : importers::shapeFields(components, choice, isPlane)) {
    require(!field.columns.empty() && field.columns.front() != importers::kNoComponent);
    for (const std::size_t column : field.columns) {
      if (column != importers::kNoComponent) ++used.at(column);
    }
    for (const std::size_t mirror : field.mirrors) {
      if (mirror != importers::kNoComponent) ++used.at(mirror);
    }
  }
  for (const int times : used) require(times == 1);
}

void checkPoints(const std::vector<std::string>& names) {
  std::vector<int> used(names.size(), 0);
  for (const importers::exodus::PointVariable& one : importers::exodus::gatherPoints(names)) {
    for (const std::size_t variable : one.variables) ++used.at(variable);
  }
  for (const int times : used) require(times == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> names = namesIn(text);
  for (const bool isPlane : {false, true}) {
    for (const bool withNumbers : {false, true}) checkShapes(names, {true, withNumbers}, isPlane);
  }
  checkPoints(names);
  try {
    const netcdf::Description description = netcdf::unpacked(text);
    require(!netcdf::packed(description).empty());
  } catch (const std::runtime_error&) {
    return 0;
  }
  return 0;
}
