#include "diff_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "driver/read_configuration.h"
#include "inspect/compare/record_differences.h"
#include "inspect/open_database.h"
#include "inspect/places/locator.h"
#include "programs/batch/program_files.h"
#include "programs/locate/located_text.h"
#include "run_records.h"
#include "tool/console.h"

namespace inspect {

namespace {

using nlohmann::ordered_json;

// What is extracted from databases where nobody says what.
constexpr const char* kEverything =
    "ODB EXTRACTIONS\nEXTRACT_MASS\nEXTRACT_HISTORY\nMINMAX_HISTORY\nEXTRACT_FIELD\nEXTRACT_ALL\nEXTRACT_FIELD_SETS\n"
    "EXTRACT_FIELD_COMPONENTS\n";

ExtractionSwitches switchesOf(const std::string& configuration) {
  ExtractionSwitches switches;
  std::istringstream lines(configuration);
  bool isActive = false;
  for (std::string line; std::getline(lines, line);) {
    isActive = isActive || line.find("ODB EXTRACTIONS") != std::string::npos;
    if (isActive) applyConfigurationLine(line, switches);
  }
  return switches;
}

// Finds the places of records in one database.
class Places {
 public:
  Places(const std::shared_ptr<const odbstore::Reader>& database, const ExtractionSwitches& switches)
      : records_(database, switches), locator_(database, switches) {}

  // Nothing for what is no extreme, or has no place.
  std::optional<Located> find(const RecordDifference& difference) {
    const std::vector<Record> meanings = records_.find(difference.name);
    if (difference.occurrence >= meanings.size()) return std::nullopt;
    const Record& record = meanings[difference.occurrence];
    if (record.kind == RecordKind::mass || record.extreme == Extreme::none) return std::nullopt;
    Located located = {record, locator_.locate(record, 0), {}};
    return located.found.places.empty() ? std::nullopt : std::optional(located);
  }

 private:
  RecordList records_;
  Locator locator_;
};

struct Side {
  RunRecords run;
  std::unique_ptr<Places> places;  // null without a database
};

Side sideOf(const std::string& path, const std::string& database, const std::string& configuration) {
  Side side = {readRecords(path, configuration), nullptr};
  if (side.run.database == nullptr && !database.empty()) side.run.database = openDatabase(database);
  if (side.run.database != nullptr)
    side.places = std::make_unique<Places>(side.run.database, switchesOf(configuration));
  return side;
}

std::string placeLine(const char* side, Side& of, const RecordDifference& difference) {
  const std::optional<Located> found = of.places ? of.places->find(difference) : std::nullopt;
  return found ? fmt::format("    {}: {}\n", side, placeText(found->found.places.front())) : "";
}

// Long values, as histories, by their beginning.
std::string shortened(const std::string& value) {
  constexpr std::size_t kMost = 60;
  return value.size() <= kMost ? value : value.substr(0, kMost) + "...";
}

std::string namesText(const char* where, const std::vector<std::string>& names, std::size_t most) {
  std::string text;
  for (std::size_t i = 0; i < std::min(most, names.size()); ++i)
    text += fmt::format("only in {}: {}\n", where, names[i]);
  if (names.size() > most) text += fmt::format("only in {}: {} more\n", where, names.size() - most);
  return text;
}

std::string textOf(const RecordComparison& comparison, std::size_t most, Side& a, Side& b) {
  std::string text;
  for (std::size_t i = 0; i < std::min(most, comparison.differences.size()); ++i) {
    const RecordDifference& one = comparison.differences[i];
    text += fmt::format("{}\n    A: {}  B: {}  difference {:.3g} ({:.3g} of the larger)\n", one.name, shortened(one.a),
                        shortened(one.b), one.difference, one.relative);
    text += placeLine("A", a, one) + placeLine("B", b, one);
  }
  if (comparison.differences.size() > most)
    text += fmt::format("{} more differ\n", comparison.differences.size() - most);
  text += namesText("A", comparison.onlyInA, most) + namesText("B", comparison.onlyInB, most);
  text += fmt::format("{} records compared, {} differ, {} only in A, {} only in B\n", comparison.compared,
                      comparison.differences.size(), comparison.onlyInA.size(), comparison.onlyInB.size());
  return escapedLines(text);
}

ordered_json finite(double number) { return std::isfinite(number) ? ordered_json(number) : ordered_json(); }

void addPlace(const char* key, Side& of, const RecordDifference& difference, ordered_json& json) {
  const std::optional<Located> found = of.places ? of.places->find(difference) : std::nullopt;
  if (found) json[key] = jsonOfPlace(found->found.places.front());
}

std::string jsonOf(const RecordComparison& comparison, std::size_t most, Side& a, Side& b) {
  ordered_json json = {{"same", comparison.isSame()},     {"compared", comparison.compared},
                       {"ignored", comparison.ignored},   {"different", comparison.differences.size()},
                       {"onlyInA", comparison.onlyInA},   {"onlyInB", comparison.onlyInB},
                       {"records", ordered_json::array()}};
  for (std::size_t i = 0; i < std::min(most, comparison.differences.size()); ++i) {
    const RecordDifference& one = comparison.differences[i];
    ordered_json record = {
        {"name", one.name}, {"occurrence", one.occurrence},         {"a", one.a},
        {"b", one.b},       {"difference", finite(one.difference)}, {"relative", finite(one.relative)}};
    addPlace("placeA", a, one, record);
    addPlace("placeB", b, one, record);
    json["records"].push_back(std::move(record));
  }
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace

int diffRecords(const DiffOptions& options) {
  const std::string configuration =
      options.configuration.empty() ? kEverything : batch::textOfFile(options.configuration);
  Tolerances tolerances(options.tolerance);
  if (!options.tolerances.empty()) tolerances.add(batch::textOfFile(options.tolerances), options.tolerances);
  const auto databaseOf = [&](std::size_t i) { return i < options.databases.size() ? options.databases[i] : ""; };
  Side a = sideOf(options.a, databaseOf(0), configuration);
  Side b = sideOf(options.b, databaseOf(1), configuration);
  const RecordComparison comparison = compareRecords(a.run.text, b.run.text, tolerances);
  const std::size_t most =
      options.most == 0 ? comparison.compared + comparison.onlyInA.size() + comparison.onlyInB.size() : options.most;
  if (!options.isQuiet) tool::print(options.isJson ? jsonOf(comparison, most, a, b) : textOf(comparison, most, a, b));
  tool::finishOutput();
  return comparison.isSame() ? kSame : kDifferent;
}

}  // namespace inspect
