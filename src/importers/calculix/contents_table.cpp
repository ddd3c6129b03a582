#include "importers/calculix/contents_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace importers::calculix {

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

const char* kindOf(const MappedField& field) {
  if (field.isTensor()) return "tensor";
  return field.columns.size() > 1 ? "vector" : "scalar";
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

struct FieldSummary {
  const ContentsBlock* block;
  const MappedField* field;
  std::set<int> frames;
  std::size_t fewestRows;
  std::size_t mostRows;
};

std::string frameTable(const Contents& contents) {
  std::vector<Row> rows = {{"step", "frame", "value", "description"}};
  std::set<std::pair<int, int>> seen;
  for (const ContentsBlock& block : contents.blocks) {
    if (!seen.emplace(block.step, block.frame).second) continue;
    rows.push_back({fmt::format("Step-{}", block.step), fmt::format("{}", block.info.incrementNumber),
                    fmt::format("{:.6g}", block.info.value), block.info.description});
  }
  return aligned(rows);
}

std::string fieldTable(const Contents& contents) {
  std::map<std::pair<int, std::string>, FieldSummary> fields;
  for (const ContentsBlock& block : contents.blocks) {
    for (const MappedField& field : block.fields) {
      const auto known = fields.try_emplace({block.step, field.name}, FieldSummary{&block, &field, {}, block.rows, 0});
      FieldSummary& summary = known.first->second;
      summary.frames.insert(block.info.incrementNumber);
      summary.fewestRows = std::min(summary.fewestRows, block.rows);
      summary.mostRows = std::max(summary.mostRows, block.rows);
    }
  }
  std::vector<Row> rows = {{"step", "field", "block", "kind", "components", "nodes", "frames"}};
  for (const auto& [key, summary] : fields) {
    const std::string nodes = summary.fewestRows == summary.mostRows
                                  ? fmt::format("{}", summary.mostRows)
                                  : fmt::format("{}-{}", summary.fewestRows, summary.mostRows);
    rows.push_back({fmt::format("Step-{}", key.first), key.second, summary.block->block, kindOf(*summary.field),
                    fmt::format("{}", fmt::join(summary.field->info.componentLabels, " ")), nodes,
                    runsOf(summary.frames)});
  }
  return aligned(rows);
}

void addSets(std::vector<Row>& rows, const char* kind, const std::map<std::string, DeckSet>& sets) {
  for (const auto& [canonical, set] : sets) {
    for (const std::string& name : set.names) rows.push_back({name, kind, fmt::format("{}", set.labels.size())});
  }
}

}  // namespace

std::string contentsTable(const Contents& contents, const Deck& deck, const std::string& results) {
  std::string text =
      fmt::format("{}: {} nodes, {} elements, {} results{}\n", results, contents.nodes, contents.elements,
                  contents.isBinary ? "binary" : "ASCII", contents.isCutOff ? ", cut off" : "");
  std::vector<Row> sets = {{"set", "of", "members"}};
  addSets(sets, "nodes", deck.nodeSets);
  addSets(sets, "elements", deck.elementSets);
  if (sets.size() > 1) text += '\n' + aligned(sets);
  if (contents.blocks.empty()) return text;
  return text + '\n' + frameTable(contents) + '\n' + fieldTable(contents);
}

}  // namespace importers::calculix
