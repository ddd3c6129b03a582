#include "inspect/params_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "base/file_error.h"

namespace inspect {

namespace {

constexpr const char* kRecordsName = "params.txt";
constexpr const char* kMarkerName = "paramsdone.txt";
constexpr const char* kMarkerLine = "Done";

MarkerState stateOf(const std::filesystem::path& marker, const std::filesystem::path& records) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(marker, failure)) return MarkerState::missing;
  std::ifstream file(marker);
  std::string line;
  std::getline(file, line);
  if (line.ends_with('\r')) line.pop_back();
  const auto written = std::filesystem::last_write_time(records, failure);
  const bool isOlder = !failure && std::filesystem::last_write_time(marker, failure) < written && !failure;
  return line != kMarkerLine || isOlder ? MarkerState::foreign : MarkerState::there;
}

}  // namespace

ParamsFile readParams(const std::string& path) {
  std::error_code ignored;
  std::filesystem::path records = path;
  if (std::filesystem::is_directory(records, ignored)) records /= kRecordsName;
  ParamsFile params;
  params.path = records.string();
  params.marker = (records.parent_path() / kMarkerName).string();
  std::ifstream file;
  // Reading from a pipe would wait for its other end.
  if (std::filesystem::is_regular_file(records, ignored)) file.open(records, std::ios::binary);
  if (!file.is_open()) throw base::NoFileError(params.path, "there is no file of that name that can be read");
  params.state = stateOf(params.marker, records);
  params.text.assign(std::istreambuf_iterator<char>(file), {});
  if (file.bad()) throw base::FileError(params.path, "", "cannot be read completely");
  return params;
}

}  // namespace inspect
