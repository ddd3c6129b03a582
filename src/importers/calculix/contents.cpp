#include "importers/calculix/contents.h"

#include <fmt/core.h>

#include <algorithm>

#include "importers/calculix/dat/placed_tables.h"
#include "importers/calculix/dat/printed_mapping.h"

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

void readResults(const std::string& results, StressAt stressAt, const Deck& deck, const LeaveOut& leaveOut,
                 const std::set<std::size_t>& leftOut, Contents& contents) {
  FrdReader reader(results);
  int lastStep = 0;
  while (std::optional<FrdBlock> next = reader.next([](const FrdResult&) { return false; }, leaveOut)) {
    if (auto* const nodes = std::get_if<FrdNodes>(&*next)) contents.nodes = std::move(nodes->labels);
    if (auto* const elements = std::get_if<FrdElements>(&*next)) contents.mesh = std::move(*elements);
    auto* const result = std::get_if<FrdResult>(&*next);
    if (result == nullptr) continue;
    result->step = trueStep(*result, deck, lastStep);
    lastStep = result->step;
    if (leftOut.contains(result->ordinal)) continue;
    if (result->rows == 0) {
      contents.emptyBlocks.emplace(result->name, result->line);
      continue;
    }
    contents.isBinary = contents.isBinary || result->format != RowFormat::text;
    std::vector<MappedField> fields = mapResult(*result, stressContentOf(*result, deck), stressAt);
    const FrameNumber frame = contents.frames.find(*result, namesOfFields(fields));
    contents.blocks.push_back(
        {false, result->ordinal, result->name, frame, result->step, std::move(fields), result->rows});
  }
  contents.isCutOff = reader.isCutOff();
  contents.lastLine = reader.lineNumber();
}

// The frames are settled then.
void readPrinted(const RunFiles& files, StressAt stressAt, const Deck& deck, const WarningSink& warn,
                 Contents& contents) {
  const bool hasStatus = !contents.frames.statusTimes().empty();
  contents.frames.checkStatus();
  const WarningSink note = [&](base::Diagnostic said) {
    said.place.file = files.results;
    warn(said);
  };
  contents.printed = placePrintedTables(files.printed, deck, !contents.isCutOff, contents.frames, note);
  if (hasStatus && contents.frames.statusTimes().empty()) {
    warn(base::warning({files.status}, "its times are not those of the results, and are not used"));
  }
  for (const PrintedTable& table : contents.printed.tables) {
    std::vector<MappedField> fields = mapTable(table, stressAt);
    if (fields.empty() || !table.frame) continue;
    contents.blocks.push_back(
        {true, table.ordinal, table.head.title, *table.frame, table.step, std::move(fields), table.rows});
  }
}

}  // namespace

Contents readContents(const RunFiles& files, StressAt stressAt, const Deck& deck, const LeaveOut& leaveOut,
                      const std::set<std::size_t>& leftOut, const WarningSink& warn) {
  Contents contents{{}, {}, false, false, 0, {}, {}, {}, Frames(readStepTimes(files.status))};
  if (files.results.empty()) {
    contents.isCutOff = true;
  } else {
    readResults(files.results, stressAt, deck, leaveOut, leftOut, contents);
  }
  readPrinted(files, stressAt, deck, warn, contents);
  return contents;
}

}  // namespace importers::calculix
