#include "importers/calculix/printed_import.h"

#include <fmt/format.h>

#include <algorithm>

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

}  // namespace

PrintedImport::PrintedImport(const std::string& path, const Contents& contents, const Model& model,
                             odbstore::Writer& writer, const std::map<FrameNumber, odbstore::FrameId>& frames)
    : path_(path), contents_(contents), model_(model), writer_(writer), frames_(frames) {}

void PrintedImport::run(PrintedHistories& histories, std::set<std::string>& fields,
                        const std::function<void(std::uint64_t, std::uint64_t)>& progress) {
  std::map<std::size_t, const ContentsBlock*> blocks;
  for (const ContentsBlock& block : contents_.blocks) {
    if (!block.isPrinted) continue;
    blocks[block.ordinal] = &block;
    for (const MappedField& field : block.fields) fields.insert(field.name);
  }
  DatReader reader(path_);
  std::size_t ordinal = 0;
  auto table = contents_.printed.tables.begin();
  for (; table != contents_.printed.tables.end() && reader.next(); ++ordinal) {
    if (table->ordinal != ordinal) continue;
    const auto block = blocks.find(ordinal);
    readTable(reader, *table, block == blocks.end() ? nullptr : block->second,
              histories.takes(*table) ? &histories : nullptr);
    ++table;
    if (progress) progress(reader.offset(), reader.size());
  }
}

void PrintedImport::readTable(DatReader& reader, const PrintedTable& table, const ContentsBlock* block,
                              PrintedHistories* histories) {
  if (block == nullptr && histories == nullptr) return;
  if (histories != nullptr) histories->start(table, table.frame ? contents_.frames[*table.frame].info.value : 0.0);
  const std::size_t width = table.width;
  DatRow row;
  DatValues values;
  rows_.first.clear();
  rows_.second.clear();
  rows_.areLocal.clear();
  rows_.numbers.clear();
  rows_.width = width;
  while (reader.nextRow(row)) {
    if (isRemark(row)) continue;
    const bool isGood = readDatRow(*table.format, row, values);
    if (!isGood || (block != nullptr && values.numbers.size() < width)) {
      throw ImportError(path_, reader.lineNumber(), fmt::format("this is no row of {}", table.head.title));
    }
    if (histories != nullptr) histories->add(values);
    if (block == nullptr) continue;
    rows_.first.push_back(values.labels[0]);
    rows_.second.push_back(values.labels[1]);
    rows_.areLocal.push_back(values.isLocal);
    for (std::size_t i = 0; i < width; ++i) rows_.numbers.push_back(static_cast<float>(values.numbers[i]));
  }
  if (!rows_.first.empty()) addFields(table, *block);
}

void PrintedImport::addFields(const PrintedTable& table, const ContentsBlock& block) {
  if (table.format->rows == DatRows::contactFace) {
    // Faces have several points without a number: those of an element are counted.
    std::map<int, int> points;
    std::transform(rows_.first.begin(), rows_.first.end(), rows_.second.begin(),
                   [&](int element) { return ++points[element]; });
  }
  for (const MappedField& field : block.fields) addBlocks(table, field, fieldOf(block.frame, field));
}

odbstore::FieldId PrintedImport::fieldOf(FrameNumber frame, const MappedField& field) {
  if (frame != frame_) fields_.clear();
  frame_ = frame;
  const auto known = fields_.find(field.name);
  if (known != fields_.end()) return known->second;
  return fields_.emplace(field.name, writer_.addField(frames_.at(frame), field.name, field.info)).first->second;
}

// One block for each type of element, in the order of their first rows.
void PrintedImport::addBlocks(const PrintedTable& table, const MappedField& field, odbstore::FieldId id) {
  const odbstore::Position position = positionOf(table.format->rows);
  std::vector<std::pair<std::string, std::vector<std::size_t>>> groups;
  if (position == odbstore::Position::nodal) {
    groups.emplace_back("", std::vector<std::size_t>());
  }
  const std::string noType;
  for (std::size_t i = 0; i < rows_.first.size(); ++i) {
    if (rows_.areLocal[i] != field.isLocal) continue;
    const std::string& type = position == odbstore::Position::nodal ? noType : model_.typeOf(rows_.first[i]);
    auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& known) { return known.first == type; });
    if (group == groups.end()) group = groups.insert(groups.end(), {type, {}});
    group->second.push_back(i);
  }
  for (const auto& [type, places] : groups) {
    odbstore::LocationLabels labels;
    std::vector<float> numbers;
    for (const std::size_t place : places) {
      (position == odbstore::Position::nodal ? labels.nodes : labels.elements).push_back(rows_.first[place]);
      if (position == odbstore::Position::integrationPoint) labels.integrationPoints.push_back(rows_.second[place]);
      const float* const row = rows_.numbers.data() + place * rows_.width;
      for (const int column : field.columns) numbers.push_back(row[column]);
    }
    const odbstore::LocationId location = writer_.addLocation({kInstance, position, type, 0, ""}, labels);
    writer_.addBlock(id, location, std::span<const float>(numbers));
  }
}

}  // namespace importers::calculix
