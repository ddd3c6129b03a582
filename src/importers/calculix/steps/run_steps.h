// What the deck, the status file and the result file say about the steps of a run, before its printed tables are
// considered.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/steps/frames.h"
#include "importers/calculix/steps/rounded.h"

namespace importers::calculix {

// An increment that is known to have been completed.
struct KnownIncrement {
  std::optional<int> number;  // nothing for the end of a step by the deck
  Rounded total;
  Rounded inStep;
  std::optional<FrameNumber> frame;  // of the result file
  bool isExpected = true;            // whether results are written after it
};

struct RunStep {
  std::optional<Procedure> procedure;
  const DeckStep* deck = nullptr;
  // Total times according to the deck.
  std::optional<double> start;
  std::optional<double> end;
  // Of a step in time, in the order of the run.
  std::vector<KnownIncrement> increments;
  bool knowsAll = false;    // whether there are no others before the last one of them
  bool mayGoOn = true;      // whether there may be others after it
  bool hasFrames = false;   // in the result file
  std::set<int> diameters;  // of its modes in the result file

  bool isInTime() const { return procedure.value_or(Procedure::time) == Procedure::time; }
};

struct RunSteps {
  std::map<int, RunStep> steps;  // by number
  bool isWhole = false;          // whether there can be no others: there is a deck
  std::string doubt;             // why the steps of the deck are not used; empty where they are
  bool confirmsStatus = false;   // whether the deck or the result file knows times of the status file

  const RunStep* find(int step) const;
  int last() const { return steps.empty() ? 0 : steps.rbegin()->first; }
  // Of the steps in time, as the deck knows them.
  StepSpans spans() const;
};

// `frames` are those of the result file, `times` those of the status file, which must have been checked, or none. The
// result refers to the deck.
RunSteps knownSteps(const Frames& frames, const StepTimes& times, const Deck& deck);

// Whether the solver writes results after an increment that is not the last one of its step.
bool isOutput(const DeckStep& step, const KnownIncrement& increment);

}  // namespace importers::calculix
