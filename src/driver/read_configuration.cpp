#include "driver/read_configuration.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <span>
#include <string_view>
#include <system_error>

#include "base/control_characters.h"
#include "result/configuration_keywords.h"

namespace {

bool contains(const std::string& line, std::string_view text) { return line.find(text) != std::string::npos; }

// The value stands behind the first "=" of the line, wherever the keyword is.
double percentageOf(const std::string& line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) {
    std::fprintf(stderr, "**ERROR** no value for PERCENTAGE in the line: %s\n", base::escaped(line).c_str());
    std::exit(1);
  }
  return leadingNumber(line.substr(equals + 1));
}

// A longer line is no text that anybody wrote.
constexpr std::size_t kLongestLine = std::size_t{1} << 20;

enum class LineOutcome { read, end, tooLong };

// The next line without its end.
LineOutcome nextLine(std::istream& file, std::span<char> room, std::string& line) {
  file.getline(room.data(), static_cast<std::streamsize>(room.size()));
  const auto count = static_cast<std::size_t>(file.gcount());
  if (file.bad() || (count == 0 && file.eof())) return LineOutcome::end;
  if (file.fail()) return LineOutcome::tooLong;
  // The end of the line counts, but is not stored; a last line may have none.
  line.assign(room.data(), file.eof() ? count : count - 1);
  return LineOutcome::read;
}

[[noreturn]] void refuseLine(const std::string& path, std::int64_t number) {
  std::fprintf(stderr, "**ERROR** line %lld of the configuration file %s is longer than 1 MiB\n",
               static_cast<long long>(number), base::escaped(path).c_str());
  std::exit(1);
}

}  // namespace

void applyConfigurationLine(const std::string& line, ExtractionSwitches& switches) {
  applySwitchKeywords(line, switches);
  if (contains(line, kPercentageKeyword)) switches.percentage = percentageOf(line);
}

void readConfiguration(const std::string& path, ExtractionSwitches& switches) {
  // Reading from a pipe would wait for its other end, and from some devices never end.
  std::ifstream file;
  std::error_code ignored;
  if (std::filesystem::is_regular_file(path, ignored)) file.open(path);
  if (!file.is_open()) {
    std::cout << "Unable to open file";
    return;
  }
  bool active = false;
  constexpr std::size_t roomBytes = kLongestLine + 1;  // a NUL stands behind the line
  // Not filled: of what a small run does, filling it would take a third.
  const auto room = std::make_unique_for_overwrite<char[]>(roomBytes);
  std::string line;
  for (std::int64_t number = 1;; ++number) {
    const LineOutcome outcome = nextLine(file, {room.get(), roomBytes}, line);
    if (outcome == LineOutcome::end) break;
    if (outcome == LineOutcome::tooLong) refuseLine(path, number);
    active = active || contains(line, kConfigurationStart);
    if (active) applyConfigurationLine(line, switches);
  }
  if (file.bad()) {
    std::fprintf(stderr, "**ERROR** configuration file %s cannot be read completely\n", base::escaped(path).c_str());
    std::exit(1);
  }
}
