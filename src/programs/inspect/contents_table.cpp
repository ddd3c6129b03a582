#include "contents_table.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>

#include "base/control_characters.h"
#include "odbstore/database_file.h"
#include "tool/text_table.h"

namespace inspect {

namespace {

using base::escaped;
using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// What a screen takes.
constexpr std::size_t kMostRows = 40;

// A table under a heading of its own, cut where it is long. Empty without rows.
std::string section(const Row& head, Rows rows, bool isAll, std::string_view what) {
  if (rows.empty()) return {};
  const std::size_t all = rows.size();
  const bool isCut = !isAll && all > kMostRows;
  if (isCut) rows.resize(kMostRows);
  rows.insert(rows.begin(), head);
  return '\n' + tool::aligned(rows) +
         (isCut ? fmt::format("... and {} more {}; --all shows them\n", all - kMostRows, what) : "");
}

std::string numberText(double value) { return fmt::format("{:.6g}", value); }

std::string vectorText(const std::vector<double>& numbers) {
  return numbers.empty() ? "" : fmt::format("({:.6g})", fmt::join(numbers, ", "));
}

std::string stepText(const ChosenContents& contents, std::size_t place) {
  return escaped(contents.allSteps[place].name);
}

std::string heading(const ChosenContents& contents) {
  const odbstore::Reader& database = *contents.database;
  const odbstore::DatabaseFile& file = *database.file();
  std::string text = fmt::format("{}: layout {}, {} bytes{}\n", escaped(contents.path), contents.layout, contents.bytes,
                                 file.isCatalogued() ? "" : ", no catalog");
  if (!database.producer().empty()) text += fmt::format("written by {}\n", escaped(database.producer()));
  if (!database.title().empty()) text += fmt::format("{}\n", escaped(database.title()));
  return text;
}

std::string meshTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  for (const MeshContents& mesh : contents.meshes) {
    std::string types;
    for (const MeshContents::Elements& elements : mesh.elements) {
      types += fmt::format("{}{} {}", types.empty() ? "" : ", ", elements.count, escaped(elements.type));
    }
    rows.push_back(
        {escaped(mesh.instance), escaped(mesh.part), mesh.nodes > 0 ? fmt::format("{}", mesh.nodes) : "", types});
  }
  return section({"instance", "part", "nodes", "elements"}, rows, isAll, "instances");
}

// "0.25 to 1"
std::string rangeText(const StepContents& step) {
  if (step.frames.empty()) return {};
  const std::string first = numberText(step.frames.front().value);
  const std::string last = numberText(step.frames.back().value);
  return first == last ? first : first + " to " + last;
}

std::string massText(const StepContents& step) {
  constexpr double kNoMass = -1.0;
  return step.info.mass == kNoMass ? "" : numberText(step.info.mass);
}

std::string stepTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  for (const std::size_t place : contents.steps) {
    const StepContents& step = contents.allSteps[place];
    rows.push_back({fmt::format("{}", place + 1), escaped(step.name), fmt::format("{}", step.frames.size()),
                    rangeText(step), massText(step), vectorText(step.info.massCenter), escaped(step.info.description)});
  }
  return section({"step", "name", "frames", "values", "mass", "centre of mass", "description"}, rows, isAll, "steps");
}

std::string frameTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  for (const std::size_t place : contents.steps) {
    for (const odbstore::FrameInfo& frame : contents.allSteps[place].frames) {
      rows.push_back({stepText(contents, place), fmt::format("{}", frame.incrementNumber), numberText(frame.value),
                      escaped(frame.description)});
    }
  }
  return section({"step", "frame", "value", "description"}, rows, isAll, "frames");
}

std::string positionsOf(const FieldContents& field) {
  std::set<std::string_view> words;
  for (const BlockContents& block : field.blocks) words.insert(odbstore::positionWord(block.location.position));
  return fmt::format("{}", fmt::join(words, ", "));
}

std::string precisionsOf(const FieldContents& field) {
  std::set<std::string_view> words;
  for (const BlockContents& block : field.blocks) words.insert(block.isDouble ? "double" : "single");
  return fmt::format("{}", fmt::join(words, ", "));
}

std::string wordsOf(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + escaped(word);
  return text;
}

// All of a field but its step.
Row fieldRow(const FieldContents& field) {
  const std::string rows = field.fewestRows == field.mostRows ? fmt::format("{}", field.mostRows)
                                                              : fmt::format("{}-{}", field.fewestRows, field.mostRows);
  return {escaped(field.name),
          kindWord(field.info.type),
          positionsOf(field),
          precisionsOf(field),
          rows,
          wordsOf(field.info.componentLabels),
          std::string(takingKeywords(field.info.description).front()),
          escaped(field.info.description) + (field.changes ? " (changes)" : "")};
}

// Fields that are alike in several steps have one row.
std::string fieldTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  std::map<Row, std::size_t> known;
  std::vector<std::set<int>> steps;
  std::vector<std::set<std::size_t>> frames;
  for (const FieldContents& field : contents.fields) {
    Row row = fieldRow(field);
    const auto [found, isNew] = known.try_emplace(row, rows.size());
    if (isNew) {
      rows.push_back(std::move(row));
      steps.emplace_back();
      frames.emplace_back();
    }
    steps[found->second].insert(static_cast<int>(field.step) + 1);
    frames[found->second].insert(field.frames.size());
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string count = frames[i].size() == 1 ? fmt::format("{}", *frames[i].begin())
                                                    : fmt::format("{}-{}", *frames[i].begin(), *frames[i].rbegin());
    rows[i].insert(rows[i].begin() + 1, {tool::runsOf(steps[i]), count});
  }
  return section(
      {"field", "steps", "frames", "kind", "position", "precision", "rows", "components", "taken by", "description"},
      rows, isAll, "fields");
}

std::string blockTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  for (const FieldContents& field : contents.fields) {
    for (const BlockContents& block : field.blocks) {
      rows.push_back({stepText(contents, field.step), escaped(field.name), escaped(block.location.instance),
                      std::string(odbstore::positionWord(block.location.position)), escaped(block.location.elementType),
                      block.location.sectionPoint == 0 ? "" : fmt::format("{}", block.location.sectionPoint),
                      kindWord(block.type), block.isDouble ? "double" : "single", fmt::format("{}", block.rows),
                      fmt::format("{}", block.storedRows), fmt::format("{}", block.width),
                      fmt::format("{}", block.frames)});
    }
  }
  return section({"step", "field", "instance", "position", "elements", "section point", "kind", "precision", "rows",
                  "stored", "numbers", "frames"},
                 rows, isAll, "blocks");
}

// Too long for a column.
std::string invariantLines(const ChosenContents& contents) {
  std::set<std::string> lines;
  for (const FieldContents& field : contents.fields) {
    std::vector<std::string> invariants;
    for (const int code : field.info.validInvariants) invariants.push_back(invariantWord(code));
    if (!invariants.empty())
      lines.insert(fmt::format("invariants of {}: {}\n", escaped(field.name), wordsOf(invariants)));
  }
  return lines.empty() ? "" : fmt::format("\n{}", fmt::join(lines, ""));
}

std::string ownerText(const ModelSet& set) {
  if (set.ownerKind == odbstore::OwnerKind::assembly) return "assembly";
  return (set.ownerKind == odbstore::OwnerKind::part ? "part " : "instance ") + escaped(set.owner);
}

std::string setTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  for (const SetContents& set : contents.sets) {
    rows.push_back({escaped(set.set.name), ownerText(set.set),
                    set.set.kind == odbstore::SetKind::node ? "nodes" : "elements", fmt::format("{}", set.members),
                    set.set.isLeftOut ? "left out of the records" : ""});
  }
  return section({"set", "owner", "of", "members", ""}, rows, isAll, "sets");
}

std::string labelText(const SetContents& set) {
  std::string text;
  for (const SetLabels& group : set.labels) {
    text += fmt::format("\n{} {} in {}:\n  {}\n", set.set.kind == odbstore::SetKind::node ? "nodes" : "elements",
                        escaped(set.set.name), escaped(group.instance),
                        tool::runsOf({group.labels.begin(), group.labels.end()}));
  }
  return text;
}

// A row for each region.
std::string historyTable(const ChosenContents& contents, bool isAll) {
  Rows rows;
  const HistoryContents* last = nullptr;
  for (const HistoryContents& history : contents.histories) {
    const bool isSame = last != nullptr && last->step == history.step && last->region == history.region &&
                        last->samples == history.samples;
    last = &history;
    if (isSame) {
      rows.back()[2] += " " + escaped(history.output);
      continue;
    }
    rows.push_back({stepText(contents, history.step), escaped(history.region), escaped(history.output),
                    fmt::format("{}", history.samples),
                    history.description == history.region ? "" : escaped(history.description)});
  }
  return section({"step", "history region", "outputs", "samples", "description"}, rows, isAll, "regions of histories");
}

}  // namespace

std::string contentsTable(const ChosenContents& contents, bool isAll) {
  std::string text = heading(contents) + meshTable(contents, isAll);
  if (contents.isWhole) {
    text += stepTable(contents, isAll) + frameTable(contents, isAll);
  }
  text += fieldTable(contents, isAll);
  if (!contents.isWhole) text += blockTable(contents, isAll) + invariantLines(contents);
  text += setTable(contents, isAll);
  for (const SetContents& set : contents.sets) text += labelText(set);
  return text + historyTable(contents, isAll);
}

}  // namespace inspect
