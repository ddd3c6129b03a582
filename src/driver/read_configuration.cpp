#include "driver/read_configuration.h"

#include <locale.h>

#include <array>
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

namespace {

constexpr const char* kStartMark = "ODB EXTRACTIONS";
constexpr const char* kPercentage = "PERCENTAGE";

struct Keyword {
  const char* text;
  bool ExtractionSwitches::*target;
  bool value;
};

constexpr std::array kKeywords = {
    Keyword{"EXTRACT_MASS", &ExtractionSwitches::mass, true},
    Keyword{"EXTRACT_HISTORY", &ExtractionSwitches::history, true},
    Keyword{"EXTRACT_FIELD", &ExtractionSwitches::field, true},
    Keyword{"MINMAX_HISTORY", &ExtractionSwitches::historyExtremes, true},
    Keyword{"EXTRACT_ALL", &ExtractionSwitches::allFieldOutputs, true},
    Keyword{"EXTRACT_STRESS", &ExtractionSwitches::stress, true},
    Keyword{"EXTRACT_SPATIAL", &ExtractionSwitches::spatial, true},
    Keyword{"EXTRACT_ELEMENT", &ExtractionSwitches::element, true},
    Keyword{"EXTRACT_FIELD_SETS", &ExtractionSwitches::fieldSets, true},
    Keyword{"EXTRACT_FIELD_COMPONENTS", &ExtractionSwitches::fieldComponents, true},
    Keyword{"DO_NOT_COMPUTE_VALUES", &ExtractionSwitches::computeValues, false},
    Keyword{"ABSOLUTE_MAX", &ExtractionSwitches::absoluteMax, true},
    Keyword{"ABSOLUTE_MIN", &ExtractionSwitches::absoluteMin, true},
    Keyword{"ENGINEERING_MIN", &ExtractionSwitches::engineeringMin, true},
    Keyword{"ENGINEERING_MAX", &ExtractionSwitches::engineeringMax, true},
    Keyword{"TENSOR_INVARIANTS", &ExtractionSwitches::tensorInvariants, true},
};

bool contains(const std::string& line, const char* text) { return line.find(text) != std::string::npos; }

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

double leadingNumber(const std::string& text) {
  constexpr const char* kDigits = "0123456789";
  const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
  if (begin == std::string::npos) return 0.0;
  const auto digitsFrom = [&](std::size_t at) {
    const std::size_t end = text.find_first_not_of(kDigits, at);
    return end == std::string::npos ? text.size() : end;
  };
  const auto isOneOf = [&](std::size_t at, const char* characters) {
    return at < text.size() && std::string_view(characters).find(text[at]) != std::string_view::npos;
  };
  const std::size_t whole = isOneOf(begin, "+-") ? begin + 1 : begin;
  std::size_t end = digitsFrom(whole);
  std::size_t digits = end - whole;
  if (isOneOf(end, ".")) {
    const std::size_t fraction = digitsFrom(end + 1);
    digits += fraction - (end + 1);
    end = fraction;
  }
  if (digits == 0) return 0.0;
  if (isOneOf(end, "eE")) {
    const std::size_t exponent = isOneOf(end + 1, "+-") ? end + 2 : end + 1;
    if (digitsFrom(exponent) > exponent) end = digitsFrom(exponent);
  }
  static const locale_t classic = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return ::strtod_l(text.substr(begin, end - begin).c_str(), nullptr, classic);
}

void applyConfigurationLine(const std::string& line, ExtractionSwitches& switches) {
  for (const Keyword& keyword : kKeywords) {
    if (contains(line, keyword.text)) switches.*keyword.target = keyword.value;
  }
  if (contains(line, kPercentage)) switches.percentage = percentageOf(line);
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
    active = active || contains(line, kStartMark);
    if (active) applyConfigurationLine(line, switches);
  }
  if (file.bad()) {
    std::fprintf(stderr, "**ERROR** configuration file %s cannot be read completely\n", base::escaped(path).c_str());
    std::exit(1);
  }
}
