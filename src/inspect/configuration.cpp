#include "inspect/configuration.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/file_error.h"
#include "result/configuration_keywords.h"

namespace inspect {

namespace {

// What a run takes for a text that nobody wrote.
constexpr std::size_t kLongestLine = std::size_t{1} << 20U;

bool contains(const std::string& line, std::string_view text) { return line.find(text) != std::string::npos; }

void applyLine(std::size_t number, const std::string& line, Configuration& configuration) {
  if (!configuration.start && contains(line, kConfigurationStart)) configuration.start = number;
  if (!configuration.start) return;
  applySwitchKeywords(line, configuration.switches);
  if (!contains(line, kPercentageKeyword)) return;
  const std::size_t equals = line.find('=');
  if (equals != std::string::npos) {
    configuration.switches.percentage = leadingNumber(line.substr(equals + 1));
  } else if (!configuration.refusal) {
    configuration.refusal = {number, "PERCENTAGE has no \"=\" and no value: a run ends here"};
  }
}

}  // namespace

Configuration readConfigurationFile(const std::string& path) {
  std::error_code ignored;
  std::ifstream file;
  // Reading from a pipe would wait for its other end, and from some devices never end.
  if (std::filesystem::is_regular_file(path, ignored)) file.open(path, std::ios::binary);
  if (!file.is_open()) throw base::NoFileError(path, "there is no configuration file of that name that can be read");
  Configuration configuration;
  configuration.path = path;
  for (std::string line; !configuration.refusal && std::getline(file, line);) {
    const std::size_t number = configuration.lines.size();
    if (line.size() > kLongestLine) {
      configuration.refusal = {number, "the line is longer than 1 MiB: a run ends here"};
      line.clear();
    }
    applyLine(number, line, configuration);
    if (line.ends_with('\r')) line.pop_back();
    configuration.lines.push_back(std::move(line));
  }
  if (file.bad()) throw base::FileError(path, "", "cannot be read completely");
  return configuration;
}

ExtractionSwitches switchesOf(const Configuration& configuration) {
  if (!configuration.refusal) return configuration.switches;
  throw base::FileError(configuration.path + ":" + std::to_string(configuration.refusal->line + 1), "",
                        configuration.refusal->reason);
}

}  // namespace inspect
