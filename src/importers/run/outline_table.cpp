#include "importers/run/outline_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <vector>

namespace importers {

namespace {

using Row = std::vector<std::string>;

// Rows of words in columns as wide as their longest one.
std::string aligned(const std::vector<Row>& rows) {
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) line += fmt::format("{:<{}}  ", row[i], widths[i]);
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

// "1-3,5": runs of numbers in ascending order.
std::string runsOf(const std::set<int>& numbers) {
  std::string text;
  for (auto at = numbers.begin(); at != numbers.end();) {
    const int first = *at;
    int last = first;
    while (++at != numbers.end() && *at == last + 1) last = *at;
    text += (text.empty() ? "" : ",") + (first == last ? fmt::format("{}", first) : fmt::format("{}-{}", first, last));
  }
  return text;
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
          shapeWord(field.info),
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
