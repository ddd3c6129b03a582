#include "importers/calculix/contents_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "importers/calculix/deck_set_names.h"

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
  std::map<std::pair<int, int>, FrameNumber> frames;
  for (const ContentsBlock& block : contents.blocks) frames.emplace(std::pair(block.step, block.place), block.frame);
  std::vector<Row> rows = {{"step", "frame", "value", "description"}};
  for (const auto& [place, number] : frames) {
    const odbstore::FrameInfo& info = contents.frames[number].info;
    rows.push_back({fmt::format("Step-{}", place.first), fmt::format("{}", info.incrementNumber),
                    fmt::format("{:.6g}", info.value), info.description});
  }
  return aligned(rows);
}

std::string fieldTable(const Contents& contents) {
  std::map<std::pair<int, std::string>, FieldSummary> fields;
  for (const ContentsBlock& block : contents.blocks) {
    for (const MappedField& field : block.fields) {
      const auto known = fields.try_emplace({block.step, field.name}, FieldSummary{&block, &field, {}, block.rows, 0});
      FieldSummary& summary = known.first->second;
      summary.frames.insert(contents.frames[block.frame].info.incrementNumber);
      summary.fewestRows = std::min(summary.fewestRows, block.rows);
      summary.mostRows = std::max(summary.mostRows, block.rows);
    }
  }
  std::vector<Row> rows = {{"step", "field", "block", "kind", "components", "rows", "frames"}};
  for (const auto& [key, summary] : fields) {
    const std::string count = summary.fewestRows == summary.mostRows
                                  ? fmt::format("{}", summary.mostRows)
                                  : fmt::format("{}-{}", summary.fewestRows, summary.mostRows);
    rows.push_back({fmt::format("Step-{}", key.first), key.second, summary.block->block, kindOf(*summary.field),
                    fmt::format("{}", fmt::join(summary.field->info.componentLabels, " ")), count,
                    runsOf(summary.frames)});
  }
  return aligned(rows);
}

// What histories are made of, a line for each kind of table of a set in a step.
std::string tableTable(const Contents& contents) {
  struct Summary {
    std::size_t tables = 0;
    std::size_t mostRows = 0;
  };
  std::map<std::tuple<int, std::string, std::string>, Summary> kinds;
  for (const PrintedTable& table : contents.printed.tables) {
    if (table.step == 0 || table.format->isMark()) continue;
    Summary& summary = kinds[{table.step, table.head.title, table.head.set}];
    ++summary.tables;
    summary.mostRows = std::max(summary.mostRows, table.rows);
  }
  std::vector<Row> rows = {{"step", "printed", "set", "rows", "tables"}};
  for (const auto& [kind, summary] : kinds) {
    rows.push_back({fmt::format("Step-{}", std::get<0>(kind)), std::get<1>(kind), std::get<2>(kind),
                    fmt::format("{}", summary.mostRows), fmt::format("{}", summary.tables)});
  }
  return rows.size() > 1 ? '\n' + aligned(rows) : "";
}

std::string setTable(const Deck& deck) {
  std::vector<Row> rows = {{"set", "of", "members"}};
  for (const StoredSet& stored : storedSets(deck.setsInOrder())) {
    rows.push_back({stored.name, stored.set->kind == odbstore::SetKind::node ? "nodes" : "elements",
                    fmt::format("{}", stored.set->labels.size())});
  }
  return rows.size() > 1 ? '\n' + aligned(rows) : "";
}

}  // namespace

std::string contentsTable(const Contents& contents, const Deck& deck, const std::string& results) {
  std::string text =
      fmt::format("{}: {} nodes, {} elements, {} results{}\n", results, contents.nodes, contents.elements,
                  contents.isBinary ? "binary" : "ASCII", contents.isCutOff ? ", cut off" : "");
  text += setTable(deck);
  if (!contents.blocks.empty()) text += '\n' + frameTable(contents) + '\n' + fieldTable(contents);
  return text + tableTable(contents);
}

}  // namespace importers::calculix
