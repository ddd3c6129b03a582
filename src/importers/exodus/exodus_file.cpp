#include "importers/exodus/exodus_file.h"

#include "base/file_error.h"

namespace importers::exodus {

namespace {

// What `read` returns; failures of the file become those of an import.
template <class Read>
auto orImportError(const Read& read) {
  try {
    return read();
  } catch (const base::FileError& error) {
    throw ImportError(SourcePlace{error.file(), 0, {}, error.object()}, error.reason());
  }
}

netcdf::File opened(const std::string& path) {
  return orImportError([&] { return netcdf::File(path); });
}

}  // namespace

bool isExodus(const netcdf::Description& description) {
  return attributeOf(description.attributes, "api_version") != nullptr ||
         attributeOf(description.attributes, "floating_point_word_size") != nullptr;
}

ExodusFile::ExodusFile(const std::string& path) : file_(opened(path)) {
  if (!isExodus(description())) {
    throw ImportError(path, 0, "a netCDF file, but not one of Exodus II (it has no attribute api_version)");
  }
  for (const netcdf::Variable& variable : description().variables) variables_.emplace(variable.name, &variable);
}

std::uint64_t ExodusFile::length(std::string_view dimension) const {
  const netcdf::Dimension* const found = description().dimension(dimension);
  return found == nullptr ? 0 : found->length;
}

const netcdf::Variable* ExodusFile::variable(const std::string& name) const {
  const auto found = variables_.find(name);
  return found == variables_.end() ? nullptr : found->second;
}

std::string ExodusFile::text(std::string_view attribute) const {
  const netcdf::Attribute* const found = attributeOf(description().attributes, attribute);
  return found == nullptr ? "" : found->text;
}

std::vector<std::int64_t> ExodusFile::integers(const std::string& name) {
  const netcdf::Variable* const found = variable(name);
  if (found == nullptr) return {};
  return orImportError([&] { return file_.integers(*found); });
}

std::vector<double> ExodusFile::reals(const std::string& name) {
  const netcdf::Variable* const found = variable(name);
  if (found == nullptr) return {};
  return orImportError([&] { return file_.reals(*found); });
}

std::vector<std::string> ExodusFile::names(const std::string& name) {
  const netcdf::Variable* const found = variable(name);
  if (found == nullptr) return {};
  const std::string text = orImportError([&] { return file_.text(*found); });
  const std::vector<std::uint64_t> shape = shapeOf(*found);
  if (shape.empty() || shape.back() == 0) return {};
  std::vector<std::string> names;
  for (std::size_t begin = 0; begin < text.size(); begin += shape.back()) {
    std::string row = text.substr(begin, shape.back());
    row.resize(std::min(row.find('\0'), row.size()));
    row.resize(row.find_last_not_of(' ') + 1);
    names.push_back(std::move(row));
  }
  return names;
}

void ExodusFile::read(const netcdf::Variable& variable, std::span<const std::uint64_t> start,
                      std::span<const std::uint64_t> count, std::span<float> to) {
  orImportError([&] { file_.read(variable, start, count, to); });
}

void ExodusFile::read(const netcdf::Variable& variable, std::span<const std::uint64_t> start,
                      std::span<const std::uint64_t> count, std::span<double> to) {
  orImportError([&] { file_.read(variable, start, count, to); });
}

}  // namespace importers::exodus
