#include "importers/run/outline_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <vector>

#include "tool/text_table.h"

namespace importers {

namespace {

using tool::aligned;
using tool::runsOf;
using Row = std::vector<std::string>;

const char* kindOf(const odbstore::FieldInfo& info) {
  if (odbstore::isTensorType(info.type)) return "tensor";
  return info.type == 3 ? "vector" : "scalar";
}

std::string setTable(const Outline& outline) {
  std::vector<Row> rows = {{"set", "of", "members"}};
  for (const OutlineSet& set : outline.sets) {
    rows.push_back(
        {set.name, set.kind == odbstore::SetKind::node ? "nodes" : "elements", fmt::format("{}", set.members)});
  }
  return rows.size() > 1 ? '\n' + aligned(rows) : "";
}

std::string frameTable(const Outline& outline) {
  std::vector<Row> rows = {{"step", "frame", "value", "description"}};
  for (const OutlineStep& step : outline.steps) {
    for (const odbstore::FrameInfo& frame : step.frames) {
      rows.push_back(
          {step.name, fmt::format("{}", frame.incrementNumber), fmt::format("{:.6g}", frame.value), frame.description});
    }
  }
  return rows.size() > 1 ? '\n' + aligned(rows) : "";
}

Row fieldRow(const OutlineStep& step, const OutlineField& field) {
  std::set<int> frames;
  for (const OutlineRows& rows : field.frames) frames.insert(step.frames[rows.frame].incrementNumber);
  const auto [fewest, most] = std::minmax_element(field.frames.begin(), field.frames.end(),
                                                  [](const auto& a, const auto& b) { return a.rows < b.rows; });
  return {step.name,
          field.name,
          field.source,
          kindOf(field.info),
          fmt::format("{}", fmt::join(field.info.componentLabels, " ")),
          fewest->rows == most->rows ? fmt::format("{}", most->rows) : fmt::format("{}-{}", fewest->rows, most->rows),
          runsOf(frames)};
}

std::string fieldTable(const Outline& outline) {
  std::vector<Row> rows = {{"step", "field", "source", "kind", "components", "rows", "frames"}};
  for (const OutlineStep& step : outline.steps) {
    for (const OutlineField& field : step.fields) rows.push_back(fieldRow(step, field));
  }
  return rows.size() > 1 ? '\n' + aligned(rows) : "";
}

std::string tableTable(const Outline& outline) {
  std::vector<Row> rows = {{"step", "printed", "set", "rows", "tables"}};
  for (const OutlineStep& step : outline.steps) {
    for (const OutlineTable& table : step.tables) {
      rows.push_back(
          {step.name, table.source, table.set, fmt::format("{}", table.rows), fmt::format("{}", table.tables)});
    }
  }
  return rows.size() > 1 ? '\n' + aligned(rows) : "";
}

}  // namespace

std::string outlineTable(const Outline& outline, const std::string& file) {
  const std::string form = outline.form.empty() ? "" : fmt::format(", {} results", outline.form);
  return fmt::format("{}: {} nodes, {} elements{}{}\n", file, outline.nodes, outline.elements, form,
                     outline.isTruncated() ? ", cut off" : "") +
         setTable(outline) + frameTable(outline) + fieldTable(outline) + tableTable(outline);
}

}  // namespace importers
