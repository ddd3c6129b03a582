#include "importers/calculix/dat/placed_tables.h"

#include <utility>

#include "importers/calculix/dat/printed_places.h"

namespace importers::calculix {

namespace {

void take(PrintedTables& printed, const PrintedPlaces& places) {
  for (std::size_t i = 0; i < printed.tables.size(); ++i) {
    PrintedTable& table = printed.tables[i];
    if (table.isLeftOut) continue;
    table.step = places.tables[i].step;
    table.frame = places.tables[i].frame;
    table.isImaginary = places.tables[i].isImaginary;
    table.part = places.tables[i].part;
  }
}

}  // namespace

PrintedTables placePrintedTables(const std::string& path, const Deck& deck, bool isComplete, Frames& frames,
                                 const WarningSink& note) {
  PrintedTables printed = readPrintedTables(path, deck);
  isComplete = isComplete && !printed.isCutOff;
  RunSteps steps = knownSteps(frames, frames.statusTimes(), deck);
  PrintedPlaces places = findPlaces(printed.tables, steps, frames, isComplete);
  if (!places.contradiction.empty() && !frames.statusTimes().empty() && !steps.confirmsStatus) {
    // The status file may be the one that is of another run.
    RunSteps others = knownSteps(frames, {}, deck);
    PrintedPlaces without = findPlaces(printed.tables, others, frames, isComplete);
    if (without.contradiction.empty()) {
      frames.dropStatus();
      steps = std::move(others);
      places = std::move(without);
    }
  }
  if (!places.contradiction.empty()) {
    printed.tables.clear();
    printed.problems = {
        {places.contradictionLine, "the tables are not of this run, and are left out: " + places.contradiction}};
  } else {
    take(printed, places);
    for (const RunFrame& frame : places.frames) frames.add(frame);
    printed.problems.insert(printed.problems.end(), places.problems.begin(), places.problems.end());
  }
  if (!steps.doubt.empty()) note(base::note({}, steps.doubt));
  frames.settle(steps.spans(), note);
  return printed;
}

}  // namespace importers::calculix
