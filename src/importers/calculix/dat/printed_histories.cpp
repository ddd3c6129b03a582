#include "importers/calculix/dat/printed_histories.h"

#include <fmt/core.h>

#include <algorithm>

#include "importers/calculix/dat/printed_mapping.h"

namespace importers::calculix {

namespace {

constexpr int kSampleWidth = 2;

// Of forces between two surfaces, "SLA, MAS", both.
std::string surfaceNames(const PrintedSetNames& names, const std::string& printed) {
  const std::size_t comma = printed.find(", ");
  if (comma == std::string::npos) return names.nameOfSurface(printed);
  return names.nameOfSurface(printed.substr(0, comma)) + ", " + names.nameOfSurface(printed.substr(comma + 2));
}

bool hasOnlyModes(const PrintedTable& table) {
  return table.format->rows == DatRows::mode || table.format->rows == DatRows::modeSum;
}

// The set of the region under a name with which no record has the name of another one. The extraction puts the last
// thing that a region has after the name of an output: the node, the element, its point, the set.
template <class Region>
std::string freeSetName(const Region& region, std::set<std::string>& records) {
  const odbstore::HistoryRegionInfo& info = region.info;
  const int label = info.integrationPoint != 0 ? info.integrationPoint : std::max(info.node, info.element);
  std::string ending = !info.set.empty() ? info.set : label >= 0 ? std::to_string(label) : "";
  const auto isTaken = [&](const auto& output) { return records.contains(output.first + "_" + ending); };
  for (int n = 1; !info.set.empty() && std::any_of(region.outputs.begin(), region.outputs.end(), isTaken); ++n) {
    ending = info.set + "-SET" + (n > 1 ? std::to_string(n) : "");
  }
  for (const auto& [name, output] : region.outputs) records.insert(name + "_" + ending);
  return info.set.empty() ? "" : ending;
}

}  // namespace

PrintedHistories::PrintedHistories(const std::string& path, const PrintedTables& printed, std::size_t limit,
                                   const Deck& deck, const WarningSink& warn)
    : names_(deck) {
  std::set<std::string> sets;
  for (const PrintedTable& table : printed.tables) {
    if (sets.insert(table.head.set).second) warnOfControlCharacters(table.head.set, {path, table.head.line}, warn);
  }
  for (const PrintedTable& table : printed.tables) {
    if (!table.format->isOfMesh() || table.format->rows == DatRows::contactFace || table.rows <= limit) continue;
    if (!tooLarge_.emplace(table.head.title, table.head.set).second || limit == 0) continue;
    warn(base::warning({path, table.head.line},
                       fmt::format("{}{} with {} rows, more than {}, become fields without histories", table.head.title,
                                   table.head.set.empty() ? "" : " of " + setName(table), table.rows, limit)));
  }
}

bool PrintedHistories::takes(const PrintedTable& table) const {
  // The points of faces come and go, and have no number.
  if (table.step == 0 || table.format->isMark() || table.format->rows == DatRows::contactFace) return false;
  return !tooLarge_.contains({table.head.title, table.head.set});
}

// As the deck spells it: tables have it in capitals and without blanks.
std::string PrintedHistories::setName(const PrintedTable& table) const {
  if (table.isOfSection) return surfaceNames(names_, table.head.set);
  const bool isOfNodes = table.format->rows == DatRows::node || table.format->traits.isOfNodes;
  return names_.nameOf(table.head.set, isOfNodes ? odbstore::SetKind::node : odbstore::SetKind::element);
}

PrintedHistories::Region& PrintedHistories::regionOf(const PrintedTable& table, const DatValues& row) {
  enum Kind { ofModel, ofNode, ofElement, ofPoint, ofSet, ofSurface };
  odbstore::HistoryRegionInfo info;
  const std::string set = table.head.set.empty() ? "" : setName(table);
  const std::string ofThatSet = set.empty() ? "" : " of " + set;
  std::string name = "Whole Model";
  Place place{table.step, ofModel, 0, 0, ""};
  switch (table.format->rows) {
    case DatRows::node:
    case DatRows::contactNode:
      info.node = row.labels[0];
      name = fmt::format("Node {}{}", row.labels[0], ofThatSet);
      place = {table.step, ofNode, row.labels[0], 0, ""};
      break;
    case DatRows::element:
      info.element = row.labels[0];
      name = fmt::format("Element {}{}", row.labels[0], ofThatSet);
      place = {table.step, ofElement, row.labels[0], 0, ""};
      break;
    case DatRows::integrationPoint:
      info.element = row.labels[0];
      info.integrationPoint = row.labels[1];
      name = fmt::format("Element {} Int Point {}{}", row.labels[0], row.labels[1], ofThatSet);
      place = {table.step, ofPoint, row.labels[0], row.labels[1], ""};
      break;
    case DatRows::total:
      info.set = set;
      name = fmt::format("{} {}", table.isOfSection ? "Surface" : "Set", set);
      place = {table.step, table.isOfSection ? ofSurface : ofSet, 0, 0, set};
      break;
    default:
      break;
  }
  info.description = name;
  return regions_.try_emplace(std::move(place), Region{name, info, {}}).first->second;
}

PrintedHistories::Target PrintedHistories::targetOf(const PrintedTable& table, const DatValues& row) {
  Region& region = regionOf(table, row);
  Target target{row.labels, row.isLocal, std::vector<Output*>(row.numbers.size(), nullptr)};
  for (std::size_t number = 0; number < row.numbers.size(); ++number) {
    const std::string name = outputName(table, number, row);
    if (!name.empty()) target.outputs[number] = &region.outputs[name];
  }
  return target;
}

void PrintedHistories::start(const PrintedTable& table, double value) {
  table_ = &table;
  const std::string kind = fmt::format("{} {} {}", table.part, table.isImaginary, table.hasLocalRows);
  rows_ = &targets_[{table.step, table.head.title, table.head.set, kind}];
  row_ = 0;
  value_ = value;
}

void PrintedHistories::add(const DatValues& row) {
  if (row_ == rows_->size()) rows_->emplace_back();
  Target& target = (*rows_)[row_++];
  const bool isKnown =
      target.labels == row.labels && target.isLocal == row.isLocal && target.outputs.size() == row.numbers.size();
  if (!isKnown) target = targetOf(*table_, row);
  const bool isList = hasOnlyModes(*table_);
  for (std::size_t number = 0; number < row.numbers.size(); ++number) {
    Output* const output = target.outputs[number];
    if (output == nullptr) continue;
    if (!isList && table_->frame && output->frame == table_->frame) continue;
    output->frame = table_->frame;
    const double count = static_cast<double>(output->numbers.size() / kSampleWidth + 1);
    output->numbers.push_back(static_cast<float>(isList ? count : value_));
    output->numbers.push_back(static_cast<float>(row.numbers[number]));
  }
}

void PrintedHistories::deliver(const std::map<int, std::size_t>& steps, Sink& sink) const {
  std::map<int, std::set<std::string>> records;
  for (const auto& [place, region] : regions_) {
    const int number = std::get<0>(place);
    const auto step = steps.find(number);
    if (step == steps.end() || !sink.takesStep(step->second)) continue;
    odbstore::HistoryRegionInfo info = region.info;
    info.set = freeSetName(region, records[number]);
    for (const auto& [name, output] : region.outputs) {
      const auto samples = static_cast<std::int64_t>(output.numbers.size() / kSampleWidth);
      sink.history(step->second, region.name, info, name, {output.numbers, samples, kSampleWidth});
    }
  }
}

}  // namespace importers::calculix
