// The steps of a CalculiX deck: their times, when they write results, and what they print.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "importers/calculix/deck/deck_keyword.h"

namespace importers::calculix {

// What a step calculates. All but modes, buckling factors and steady states go on in time.
enum class Procedure { time, modes, buckling, steadyState };

// One quantity that *NODE PRINT, *EL PRINT, *CONTACT PRINT or *SECTION PRINT asks for.
struct PrintRequest {
  enum class Kind { node, element, contact, section };
  enum class Totals { no, yes, only };

  Kind kind = Kind::node;
  std::string set;  // canonical name of the set or surface, "A, B" for a pair of surfaces; empty for all contact
  std::string key;  // "U", "S", ...; of a section "SOF", whatever it asks for
  Totals totals = Totals::no;

  auto operator<=>(const PrintRequest&) const = default;
};

// As in the solver, requests stay in force in later steps: the first request of a kind in a step replaces all earlier
// ones of that kind.
struct DeckStep {
  Procedure procedure = Procedure::time;
  // Results are written after every n-th increment and after the last one. All requests of a step, for printing and for
  // the result file, share the number that the deck gives last.
  int frequency = 1;
  // If there are any, results are written at these times, ascending, and after the last increment instead.
  std::vector<double> timePoints;
  bool timePointsAreTotal = false;  // from the start of the run, not of the step

  std::optional<double> period = 0;  // how long it goes in total time; nothing if the deck does not say
  std::optional<double> startsAt;    // the total time that the step sets, with TIME RESET 0
  bool isPeriodic = false;           // in time, but within periods of a steady state, which take no total time
  bool isFluid = false;              // prints at times of its own, which the status file does not know
  bool isUncoupled = false;          // temperatures and displacements in turn: each has a line in the status file
  double lastFrequency = 0.0;        // of a steady state: the end of its range, 0 if the deck does not say
  std::pair<int, int> diameters;     // of the modes of a cyclic model, first and last
  bool isCyclic = false;             // whether it names nodal diameters
  std::vector<PrintRequest> prints;  // in the order in which they are printed
  bool knowsPrints = true;           // false if a restart takes over requests that the deck does not show
};

struct DeckSteps {
  std::vector<DeckStep> steps;
  // A deck that restarts an earlier run continues its step numbers. Nothing: the deck does not say where it starts.
  std::optional<int> stepsBefore = 0;
  bool removesElements = false;  // *MODEL CHANGE

  // The step by its number in the run; null for one that the deck does not have.
  const DeckStep* find(int step) const;
};

// Collects the steps of a deck while it is read. Must be given every keyword and every data line.
class DeckStepReader {
 public:
  void start(const Keyword& keyword);
  void takeData(std::string_view line);
  // Call once, after the last line.
  DeckSteps finish();

 private:
  enum class Data { none, prints, period, range, points };
  struct TimePoints {
    std::string name;
    std::vector<double> times;
    bool areTotal = false;
    bool areGenerated = false;
  };

  bool hasStep() const { return !steps_.steps.empty(); }
  void startProcedure(const Keyword& keyword);
  DeckStep& step() { return steps_.steps.back(); }
  void startStep();
  void startTime(const Keyword& keyword);
  void startPrint(PrintRequest::Kind kind, const Keyword& keyword);
  void takeFrequency(const Keyword& keyword);
  void wipe(PrintRequest::Kind kind);
  void takePrints(std::string_view line);
  void takePoints(std::string_view line);

  DeckSteps steps_;
  std::vector<TimePoints> points_;
  Data data_ = Data::none;
  PrintRequest request_;                   // that the keys of the data lines complete
  bool isWanted_ = true;                   // false for FREQUENCY=0
  std::vector<PrintRequest::Kind> asked_;  // in this step
  bool isRestart_ = false;
};

}  // namespace importers::calculix
