#include "inspect/compare/record_differences.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "tables/record_lines.h"

namespace inspect {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Values of each name in their order.
struct Records {
  std::vector<std::string_view> names;  // each once
  std::unordered_map<std::string_view, std::vector<std::string_view>> values;
};

Records recordsIn(const std::string& text) {
  Records records;
  tables::forEachRecord(text, [&](std::string_view name, std::string_view value) {
    std::vector<std::string_view>& values = records.values[name];
    if (values.empty()) records.names.push_back(name);
    values.push_back(value);
  });
  return records;
}

// Takes the next number, or the text between two marks, off the front; what stands between numbers, as parentheses and
// commas, has to be the same on both sides.
std::string_view takeUntilMark(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of("(), "), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end);
  return taken;
}

std::optional<double> numberFrom(std::string_view text) {
  const std::string copy(text);
  char* end = nullptr;
  const double number = std::strtod(copy.c_str(), &end);
  if (copy.empty() || *end != '\0') return std::nullopt;
  return number;
}

struct Distance {
  double absolute = 0.0;
  double relative = 0.0;
  bool isTolerated = true;
};

Distance distanceOf(double a, double b, const Tolerance& tolerance) {
  if (a == b || (std::isnan(a) && std::isnan(b))) return {};
  if (!std::isfinite(a) || !std::isfinite(b)) return {kInfinity, kInfinity, false};
  // Of large numbers with different signs the difference can overflow, the share of the larger one cannot.
  const double largest = std::max(std::abs(a), std::abs(b));
  const double relative = std::abs(a / largest - b / largest);
  const double absolute = std::abs(a - b);
  return {absolute, relative, absolute <= tolerance.absolute || relative <= tolerance.relative};
}

// The largest distance of the numbers in two values that is not tolerated.
Distance distanceOf(std::string_view a, std::string_view b, const Tolerance& tolerance) {
  Distance largest;
  while (!a.empty() || !b.empty()) {
    const std::string_view wordA = takeUntilMark(a);
    const std::string_view wordB = takeUntilMark(b);
    const std::optional<double> numberA = numberFrom(wordA);
    const std::optional<double> numberB = numberFrom(wordB);
    const bool isSameForm = a.substr(0, 1) == b.substr(0, 1) && (wordA == wordB || (numberA && numberB));
    if (!isSameForm) return {kInfinity, kInfinity, false};
    if (numberA && numberB) {
      const Distance distance = distanceOf(*numberA, *numberB, tolerance);
      if (!distance.isTolerated && (largest.isTolerated || distance.relative > largest.relative)) largest = distance;
    }
    if (!a.empty()) a.remove_prefix(1);
    if (!b.empty()) b.remove_prefix(1);
  }
  return largest;
}

void compareValues(const std::string& name, const std::vector<std::string_view>& a,
                   const std::vector<std::string_view>& b, const Tolerance& tolerance, RecordComparison& comparison) {
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    ++comparison.compared;
    const Distance distance = distanceOf(a[i], b[i], tolerance);
    if (distance.isTolerated) continue;
    comparison.differences.push_back(
        {name, i, std::string(a[i]), std::string(b[i]), distance.absolute, distance.relative});
  }
}

}  // namespace

RecordComparison compareRecords(const std::string& a, const std::string& b, const Tolerances& tolerances) {
  const Records recordsA = recordsIn(a);
  const Records recordsB = recordsIn(b);
  RecordComparison comparison;
  static const std::vector<std::string_view> kNone;
  const auto valuesIn = [](const Records& records, std::string_view name) -> const std::vector<std::string_view>& {
    const auto found = records.values.find(name);
    return found == records.values.end() ? kNone : found->second;
  };
  for (const std::string_view name : recordsA.names) {
    const std::string text(name);
    const Tolerance& tolerance = tolerances.of(text);
    const std::vector<std::string_view>& ofA = valuesIn(recordsA, name);
    const std::vector<std::string_view>& ofB = valuesIn(recordsB, name);
    if (tolerance.isIgnored) {
      comparison.ignored += ofA.size();
      continue;
    }
    compareValues(text, ofA, ofB, tolerance, comparison);
    for (std::size_t i = ofB.size(); i < ofA.size(); ++i) comparison.onlyInA.push_back(text);
  }
  for (const std::string_view name : recordsB.names) {
    const std::string text(name);
    if (tolerances.of(text).isIgnored) continue;
    for (std::size_t i = valuesIn(recordsA, name).size(); i < valuesIn(recordsB, name).size(); ++i)
      comparison.onlyInB.push_back(text);
  }
  std::stable_sort(comparison.differences.begin(), comparison.differences.end(),
                   [](const RecordDifference& x, const RecordDifference& y) { return x.relative > y.relative; });
  return comparison;
}

}  // namespace inspect
