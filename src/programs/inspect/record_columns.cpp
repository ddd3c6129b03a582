#include "record_columns.h"

#include <fmt/format.h>

namespace inspect {

namespace {

const char* kindWordOf(RecordKind kind) {
  if (kind == RecordKind::mass) return "mass";
  return kind == RecordKind::history ? "history" : "field";
}

const char* ownerWordOf(odbstore::OwnerKind kind) {
  if (kind == odbstore::OwnerKind::assembly) return "assembly";
  return kind == odbstore::OwnerKind::part ? "part" : "instance";
}

// A text for each column; empty where the record has no such part.
std::vector<std::string> partsOf(const Record& record) {
  const bool isField = record.kind == RecordKind::field;
  std::vector<std::string> parts = {kindWordOf(record.kind), std::string(record.stepName),
                                    isField ? fmt::format("{}", record.increment) : "",
                                    isField ? fmt::format("{}", record.frameValue) : ""};
  if (record.set != nullptr) {
    parts.insert(parts.end(),
                 {record.set->kind == odbstore::SetKind::node ? "nodes" : "elements",
                  ownerWordOf(record.set->ownerKind), std::string(record.set->owner), std::string(record.set->name)});
  } else {
    parts.insert(parts.end(), 4, std::string());
  }
  for (const std::string_view part :
       {record.field, record.quantity, wordOf(record.extreme), record.region, record.output, record.label}) {
    parts.emplace_back(part);
  }
  return parts;
}

}  // namespace

std::vector<tables::Column> partColumns() {
  std::vector<tables::Column> columns = {{"kind"}, {"step"}, {"frame", true, true}, {"frameValue", true}};
  for (const char* name :
       {"setKind", "ownerKind", "owner", "set", "field", "quantity", "extreme", "region", "output", "label"}) {
    columns.push_back({name});
  }
  return columns;
}

const std::vector<tables::Cell>& PartCells::of(const std::vector<Record>& records) {
  texts_.assign(partColumns().size(), "");
  for (std::size_t i = 0; i < records.size(); ++i) {
    std::vector<std::string> parts = partsOf(records[i]);
    if (i == 0) texts_ = std::move(parts);
    for (std::size_t k = 0; i > 0 && k < texts_.size(); ++k) {
      if (texts_[k] != parts[k]) texts_[k].clear();
    }
  }
  cells_.clear();
  for (const std::string& text : texts_) cells_.push_back(text.empty() ? tables::Cell() : tables::Cell(text));
  return cells_;
}

}  // namespace inspect
