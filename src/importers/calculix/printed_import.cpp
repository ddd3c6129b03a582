#include "importers/calculix/printed_import.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

#include "base/label_index.h"
#include "importers/run/merged_rows.h"

namespace importers::calculix {

namespace {

odbstore::Position positionOf(DatRows rows) {
  switch (rows) {
    case DatRows::integrationPoint:
    case DatRows::contactFace:
      return odbstore::Position::integrationPoint;
    case DatRows::element:
      return odbstore::Position::wholeElement;
    default:
      return odbstore::Position::nodal;
  }
}

// Faces have several points without a number: those of an element are counted.
void numberPoints(const std::vector<int>& elements, std::vector<int>& points) {
  std::map<int, int> count;
  std::transform(elements.begin(), elements.end(), points.begin(), [&](int element) { return ++count[element]; });
}

}  // namespace

std::vector<Target> PrintedImport::chosenOf(const PrintedTable& table) const {
  std::vector<Target> chosen;
  const auto targets = plan_.tables.find(table.ordinal);
  if (targets == plan_.tables.end()) return chosen;
  std::copy_if(targets->second.begin(), targets->second.end(), std::back_inserter(chosen),
               [this](const Target& target) { return sink_.takes(target.rows); });
  return chosen;
}

void PrintedImport::run(PrintedHistories& histories, const ProgressSink& progress) {
  DatReader reader(path_);
  std::size_t ordinal = 0;
  auto table = contents_.printed.tables.begin();
  for (; table != contents_.printed.tables.end() && reader.next(); ++ordinal) {
    if (table->ordinal != ordinal) continue;
    readTable(reader, *table, chosenOf(*table), histories.takes(*table) ? &histories : nullptr);
    ++table;
    if (progress) progress(reader.offset(), reader.size());
  }
}

void PrintedImport::readTable(DatReader& reader, const PrintedTable& table, const std::vector<Target>& targets,
                              PrintedHistories* histories) {
  if (targets.empty() && histories == nullptr) return;
  if (histories != nullptr) histories->start(table, table.frame ? contents_.frames[*table.frame].info.value : 0.0);
  rows_ = {{}, {}, {}, {}, table.width};
  DatRow row;
  DatValues values;
  while (reader.nextRow(row)) {
    if (isRemark(row)) continue;
    const bool isGood = readDatRow(*table.format, row, values);
    if (!isGood || (!targets.empty() && values.numbers.size() < rows_.width)) {
      throw ImportError(path_, reader.lineNumber(), fmt::format("this is not a row of {}", table.head.title));
    }
    if (histories != nullptr) histories->add(values);
    if (targets.empty()) continue;
    rows_.first.push_back(values.labels[0]);
    rows_.second.push_back(values.labels[1]);
    rows_.areLocal.push_back(values.isLocal);
    for (std::size_t i = 0; i < rows_.width; ++i) rows_.numbers.push_back(static_cast<float>(values.numbers[i]));
  }
  if (table.format->rows == DatRows::contactFace) numberPoints(rows_.first, rows_.second);
  for (const Target& target : targets) deliver(table, target);
}

void PrintedImport::deliver(const PrintedTable& table, const Target& target) {
  const odbstore::Position position = positionOf(table.format->rows);
  const bool hasPoints = position == odbstore::Position::integrationPoint;
  odbstore::LocationLabels labels;
  std::vector<int>& first = position == odbstore::Position::nodal ? labels.nodes : labels.elements;
  std::vector<double> numbers;
  for (std::size_t row = 0; row < rows_.first.size(); ++row) {
    if (rows_.areLocal[row] != target.field->isLocal) continue;
    first.push_back(rows_.first[row]);
    if (hasPoints) labels.integrationPoints.push_back(rows_.second[row]);
    for (const int column : target.field->columns) {
      numbers.push_back(rows_.numbers[row * rows_.width + static_cast<std::size_t>(column)]);
    }
  }
  // A set that lists a node twice has it printed twice.
  if (!hasPoints && base::LabelIndex(first).repeated()) {
    MergedRows once;
    once.add(position, labels, numbers);
    labels = once.labels();
    numbers = once.values();
  }
  sink_.rows(target.rows, position, labels, std::span<const double>(numbers), {path_, table.head.line});
}

}  // namespace importers::calculix
