#include "importers/calculix/printed_histories.h"

#include <fmt/format.h>

#include "importers/calculix/printed_mapping.h"

namespace importers::calculix {

namespace {

constexpr int kSampleWidth = 2;

bool hasOnlyModes(const PrintedTable& table) {
  return table.format->rows == DatRows::mode || table.format->rows == DatRows::modeSum;
}

}  // namespace

PrintedHistories::PrintedHistories(const std::string& path, const PrintedTables& printed, std::size_t limit,
                                   const Deck& deck, const WarningSink& warn)
    : deck_(deck) {
  for (const PrintedTable& table : printed.tables) {
    if (!table.format->isOfMesh() || table.format->rows == DatRows::contactFace || table.rows <= limit) continue;
    if (!tooLarge_.emplace(table.head.title, table.head.set).second || limit == 0) continue;
    warn(fmt::format("{}: warning: {}{} with {} rows, more than {}, become fields without histories",
                     placeIn(path, table.head.line), table.head.title,
                     table.head.set.empty() ? "" : " of " + setName(table), table.rows, limit));
  }
}

bool PrintedHistories::takes(const PrintedTable& table) const {
  // The points of faces come and go, and have no number.
  if (table.step == 0 || table.format->isMark() || table.format->rows == DatRows::contactFace) return false;
  return !tooLarge_.contains({table.head.title, table.head.set});
}

// As the deck spells it: tables have it in capitals and without blanks.
std::string PrintedHistories::setName(const PrintedTable& table) const {
  const bool isOfNodes =
      table.format->rows == DatRows::node || table.format->name == "RF" || table.format->name == "RFL";
  const DeckSet* const set =
      deck_.setPrintedAs(table.head.set, isOfNodes ? odbstore::SetKind::node : odbstore::SetKind::element);
  if (set != nullptr) return set->names.front();
  return table.head.set;
}

PrintedHistories::Region& PrintedHistories::regionOf(const PrintedTable& table, const DatValues& row) {
  odbstore::HistoryRegionInfo info;
  std::string name = "Whole Model";
  const std::string set = table.head.set.empty() ? "" : setName(table);
  const std::string ofSet = set.empty() ? "" : " of " + set;
  switch (table.format->rows) {
    case DatRows::node:
    case DatRows::contactNode:
      info.node = row.labels[0];
      name = fmt::format("Node {}{}", row.labels[0], ofSet);
      break;
    case DatRows::element:
      info.element = row.labels[0];
      name = fmt::format("Element {}{}", row.labels[0], ofSet);
      break;
    case DatRows::integrationPoint:
      info.element = row.labels[0];
      info.integrationPoint = row.labels[1];
      name = fmt::format("Element {} Int Point {}{}", row.labels[0], row.labels[1], ofSet);
      break;
    case DatRows::total:
      info.set = set;
      name = fmt::format("{} {}", table.isOfSection ? "Surface" : "Set", set);
      break;
    default:
      break;
  }
  info.description = name;
  return regions_.try_emplace({table.step, name}, Region{info, {}}).first->second;
}

PrintedHistories::Target PrintedHistories::targetOf(const PrintedTable& table, const DatValues& row) {
  Region& region = regionOf(table, row);
  Target target{row.labels, std::vector<std::vector<float>*>(row.numbers.size(), nullptr)};
  // The frequency of the mode comes first in tables of factors, and is no result of the steady state.
  const std::size_t first = table.format->rows == DatRows::frequency ? 1 : 0;
  // Real modes have an eigenvalue in their first column, complex ones do not.
  const std::size_t missing = table.format->name == "EIG" && row.numbers.size() == table.format->width() ? 1 : 0;
  for (std::size_t column = first; column < row.numbers.size(); ++column) {
    target.outputs[column] = &region.outputs[outputName(table, column + missing, row)];
  }
  return target;
}

void PrintedHistories::start(const PrintedTable& table, double value) {
  table_ = &table;
  rows_ = &targets_[{table.step, table.head.title, table.head.set, table.isImaginary}];
  row_ = 0;
  value_ = value;
}

void PrintedHistories::add(const DatValues& row) {
  if (row_ == rows_->size()) rows_->emplace_back();
  Target& target = (*rows_)[row_++];
  if (target.labels != row.labels || target.outputs.size() != row.numbers.size()) target = targetOf(*table_, row);
  for (std::size_t column = 0; column < row.numbers.size(); ++column) {
    std::vector<float>* const samples = target.outputs[column];
    if (samples == nullptr) continue;
    const double mode = static_cast<double>(samples->size() / kSampleWidth + 1);
    samples->push_back(static_cast<float>(hasOnlyModes(*table_) ? mode : value_));
    samples->push_back(static_cast<float>(row.numbers[column]));
  }
}

void PrintedHistories::deliver(const std::map<int, std::size_t>& steps, Sink& sink) const {
  for (const auto& [key, region] : regions_) {
    const auto step = steps.find(key.first);
    if (step == steps.end() || !sink.takesStep(step->second)) continue;
    for (const auto& [name, numbers] : region.outputs) {
      const auto samples = static_cast<std::int64_t>(numbers.size() / kSampleWidth);
      sink.history(step->second, key.second, region.info, name, {numbers, samples, kSampleWidth});
    }
  }
}

}  // namespace importers::calculix
