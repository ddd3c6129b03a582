#include "inspect/compare/tolerances.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "base/file_error.h"

namespace inspect {

namespace {

constexpr const char* kBlanks = " \t\r";

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool readNumber(const std::string& text, double& to) {
  char* end = nullptr;
  to = std::strtod(text.c_str(), &end);
  return !text.empty() && *end == '\0' && std::isfinite(to) && to >= 0.0;
}

// Takes a word of a line; false where it is none of them.
bool takeWord(const std::string& word, Tolerance& to) {
  if (word == "ignore") return to.isIgnored = true;
  if (word.starts_with("abs=")) return readNumber(word.substr(4), to.absolute);
  if (word.starts_with("rel=")) return readNumber(word.substr(4), to.relative);
  return false;
}

}  // namespace

void Tolerances::add(const std::string& text, const std::string& file) {
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    // Names may hold blanks, so the words are taken off the end.
    std::string pattern = trimmed(line.substr(0, line.find('#')));
    if (pattern.empty()) continue;
    Tolerance tolerance;
    bool hasWord = false;
    for (std::size_t blank = 0; (blank = pattern.find_last_of(kBlanks)) != std::string::npos;) {
      if (!takeWord(pattern.substr(blank + 1), tolerance)) break;
      pattern = trimmed(pattern.substr(0, blank));
      hasWord = true;
    }
    if (!hasWord) {
      throw base::FileError(fmt::format("{}:{}", file, number), "",
                            "a line is a pattern and abs=NUMBER, rel=NUMBER or ignore after it");
    }
    patterns_.emplace_back(pattern, tolerance);
  }
}

const Tolerance& Tolerances::of(const std::string& name) const {
  for (const auto& [pattern, tolerance] : patterns_) {
    if (pattern == name || ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0) return tolerance;
  }
  return others_;
}

}  // namespace inspect
