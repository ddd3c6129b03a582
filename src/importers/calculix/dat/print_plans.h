// Which tables the solver prints together, by what the steps of a deck ask for.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/steps/run_steps.h"

namespace importers::calculix {

// Title and set of a table, the set as the deck's requests are kept.
using TableKind = std::pair<std::string, std::string>;
TableKind tableKindOf(const PrintedTable& table);

// Requests stay in force in later steps, so there are fewer plans than steps.
class PrintPlans {
 public:
  explicit PrintPlans(const RunSteps& steps);

  // Those of `plans` in which a kind of table may occur once more after `count` occurrences in the same output. A kind
  // that is in no plan may occur once in all of them.
  std::vector<int> thatPrint(const TableKind& kind, int count, const std::vector<int>& plans) const;
  // All plans; none without a deck.
  const std::vector<int>& all() const { return all_; }
  // The plan of a step, -1 if unknown.
  int of(int step) const;
  // How often a kind of table occurs in one output of a step, at least once.
  int timesIn(int step, const TableKind& kind) const;

  // What the n-th table (from 0) of forces on a surface holds in one output: "CFN" for the normal and "CFS" for the
  // shear forces between surfaces, "" for all forces, a number where the plan does not have it. -1 means no plan.
  std::string partOfForces(int plan, const PrintedTable& table, int n) const;

 private:
  struct Plan {
    std::vector<PrintRequest> requests;
    std::map<TableKind, int> times;
  };

  int timesOf(int plan, const TableKind& kind) const;

  std::vector<Plan> plans_;
  std::vector<int> all_;
  std::map<int, int> ofStep_;
  std::set<TableKind> kinds_;  // of any plan
};

}  // namespace importers::calculix
