#include "importers/calculix/contents.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>

#include "importers/calculix/placed_tables.h"
#include "importers/calculix/printed_mapping.h"
#include "importers/text_fields.h"

namespace importers::calculix {

StressContent stressContentOf(const FrdResult& block, const Deck& deck) {
  const bool hasForces = deck.sectionForcesFrom > 0 && block.step >= deck.sectionForcesFrom;
  return hasForces ? StressContent::sectionForces : StressContent::stress;
}

namespace {

// The solver writes buckling factors under the number of its first step. The deck knows the step that they belong to:
// the first buckling step that is not before what was written last.
int trueStep(const FrdResult& result, const Deck& deck, int lastStep) {
  if (result.kind != AnalysisKind::buckling) return result.step;
  const auto isBuckling = [&](int step) { return deck.steps.find(step)->procedure == Procedure::buckling; };
  if (deck.steps.find(result.step) == nullptr || isBuckling(result.step)) return result.step;
  for (int step = std::max(lastStep, result.step); deck.steps.find(step) != nullptr; ++step) {
    if (isBuckling(step)) return step;
  }
  return result.step;
}

void readResults(const std::string& results, StressAt stressAt, const Deck& deck, Contents& contents) {
  FrdReader reader(results);
  std::size_t ordinal = 0;
  int lastStep = 0;
  while (std::optional<FrdBlock> next = reader.next([](const FrdResult&) { return false; })) {
    if (const auto* nodes = std::get_if<FrdNodes>(&*next)) contents.nodes += nodes->labels.size();
    if (const auto* elements = std::get_if<FrdElements>(&*next)) {
      for (const FrdElementGroup& group : elements->groups) contents.elements += group.labels.size();
    }
    auto* const result = std::get_if<FrdResult>(&*next);
    if (result == nullptr) continue;
    result->step = trueStep(*result, deck, lastStep);
    lastStep = result->step;
    const std::size_t place = ordinal++;
    if (result->rows == 0) continue;
    contents.isBinary = contents.isBinary || result->format != RowFormat::text;
    std::vector<MappedField> fields = mapResult(*result, stressContentOf(*result, deck), stressAt);
    const FrameNumber frame = contents.frames.find(*result, namesOfFields(fields));
    contents.blocks.push_back({false, place, result->name, frame, result->step, 0, std::move(fields), result->rows});
  }
  contents.isCutOff = reader.isCutOff();
}

// The frames are settled then.
void readPrinted(const RunFiles& files, StressAt stressAt, const Deck& deck, const WarningSink& warn,
                 Contents& contents) {
  contents.frames.checkStatus();
  const WarningSink note = [&](const std::string& text) { warn(fmt::format("{}: note: {}", files.results, text)); };
  contents.printed = placePrintedTables(files.printed, deck, !contents.isCutOff, contents.frames, note);
  for (const PrintedTable& table : contents.printed.tables) {
    std::vector<MappedField> fields = mapTable(table, stressAt);
    if (fields.empty() || !table.frame) continue;
    contents.blocks.push_back(
        {true, table.ordinal, table.head.title, *table.frame, table.step, 0, std::move(fields), table.rows});
  }
}

}  // namespace

Contents readContents(const RunFiles& files, StressAt stressAt, const Deck& deck, const WarningSink& warn) {
  Contents contents{0, 0, false, false, {}, {}, Frames(files.status, warn)};
  readResults(files.results, stressAt, deck, contents);
  readPrinted(files, stressAt, deck, warn, contents);
  const std::vector<int> places = placesInSteps(contents.frames);
  for (ContentsBlock& block : contents.blocks) block.place = places[block.frame];
  return contents;
}

namespace {

std::set<std::string> fieldNames(const Contents& contents) {
  std::set<std::string> names;
  for (const ContentsBlock& block : contents.blocks) {
    for (const MappedField& field : block.fields) names.insert(field.name);
  }
  return names;
}

// "frames 1-5" or "frames 3" of a step; one that has histories alone has no frames.
std::string frameNumbers(const Contents& contents, int step) {
  std::set<int> numbers;
  for (const ContentsBlock& block : contents.blocks) {
    if (block.step == step) numbers.insert(contents.frames[block.frame].info.incrementNumber);
  }
  if (numbers.empty()) return "no frames";
  return *numbers.begin() == *numbers.rbegin() ? fmt::format("frames {}", *numbers.begin())
                                               : fmt::format("frames {}-{}", *numbers.begin(), *numbers.rbegin());
}

std::set<int> stepNumbers(const Contents& contents) {
  std::set<int> steps;
  for (const ContentsBlock& block : contents.blocks) steps.insert(block.step);
  for (const PrintedTable& table : contents.printed.tables) {
    if (table.step > 0) steps.insert(table.step);
  }
  return steps;
}

std::string whatThereIs(const Contents& contents) {
  std::vector<std::string> steps;
  for (const int step : stepNumbers(contents)) {
    steps.push_back(fmt::format("step {} ({})", step, frameNumbers(contents, step)));
  }
  if (steps.empty()) return "the file holds no results";
  return fmt::format("the file holds {} with the fields {}", fmt::join(steps, ", "),
                     fmt::join(fieldNames(contents), ", "));
}

void requireAsked(const Contents& contents, const Selection& selection, const std::string& results) {
  const std::set<std::string> names = fieldNames(contents);
  const std::set<int> steps = stepNumbers(contents);
  const auto refuse = [&](const std::string& what) {
    throw ImportError(results, 0, fmt::format("there is no {}; {}", what, whatThereIs(contents)));
  };
  for (const std::string& field : selection.fields) {
    const auto isIt = [&](const std::string& name) { return upperCased(name) == upperCased(field); };
    if (std::none_of(names.begin(), names.end(), isIt)) refuse(fmt::format("field {}", field));
  }
  for (const int step : selection.steps) {
    if (!steps.contains(step)) refuse(fmt::format("step {}", step));
  }
}

// The places of the frames of a step that have fields.
struct FrameRange {
  int first = std::numeric_limits<int>::max();
  int last = 0;
};

bool takesFrame(const FrameChoice& choice, const ContentsBlock& block, int increment, const FrameRange& range) {
  switch (choice.kind) {
    case FrameChoice::Kind::all:
      return true;
    case FrameChoice::Kind::first:
      return block.place == range.first;
    case FrameChoice::Kind::last:
      return block.place == range.last;
    case FrameChoice::Kind::range:
      return increment >= choice.from && increment <= choice.to;
  }
  return false;
}

// Histories of selected steps are something too, unless fields are asked for.
bool hasTables(const Contents& contents, const Selection& selection) {
  return selection.fields.empty() &&
         std::any_of(contents.printed.tables.begin(), contents.printed.tables.end(),
                     [&](const PrintedTable& table) { return table.step > 0 && selection.takesStep(table.step); });
}

}  // namespace

void select(Contents& contents, const Selection& selection, const std::string& results) {
  if (selection.isEverything()) return;
  requireAsked(contents, selection, results);
  std::map<int, FrameRange> ranges;
  for (const ContentsBlock& block : contents.blocks) {
    FrameRange& range = ranges[block.step];
    range = {std::min(range.first, block.place), std::max(range.last, block.place)};
  }
  const std::string all = whatThereIs(contents);
  for (ContentsBlock& block : contents.blocks) {
    const int increment = contents.frames[block.frame].info.incrementNumber;
    const bool isTaken =
        selection.takesStep(block.step) && takesFrame(selection.frames, block, increment, ranges.at(block.step));
    std::erase_if(block.fields,
                  [&](const MappedField& field) { return !isTaken || !selection.takesField(field.name); });
  }
  std::erase_if(contents.blocks, [](const ContentsBlock& block) { return block.fields.empty(); });
  if (contents.blocks.empty() && !hasTables(contents, selection))
    throw ImportError(results, 0, "nothing is selected; " + all);
}

}  // namespace importers::calculix
