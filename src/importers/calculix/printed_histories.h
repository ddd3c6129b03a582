// Collects the histories that printed tables make, until their steps are complete.
#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/printed_tables.h"
#include "importers/diagnostics.h"
#include "importers/run/sink.h"

namespace importers::calculix {

// A region for every node, element or integration point of a printed set, for every set of which sums are printed, for
// every surface with forces, and one for the whole model: modes, factors, energies of contact. A sample is the value of
// the frame (time in the step, frequency, factor), of tables of modes their number, and what was printed.
class PrintedHistories {
 public:
  // Tables with more than `limit` rows at the mesh, in any frame, make no histories. A warning, with the line of the
  // first one, names the set. `path` is that of the printed file.
  PrintedHistories(const std::string& path, const PrintedTables& printed, std::size_t limit, const Deck& deck,
                   const WarningSink& warn);

  // Whether rows of the table make histories.
  bool takes(const PrintedTable& table) const;
  // The rows that are added from now on are those of this table, which must be taken; `value` is that of its frame.
  void start(const PrintedTable& table, double value);
  void add(const DatValues& row);

  // Hands over the histories of chosen steps; `steps` are their places in the outline, by number.
  void deliver(const std::map<int, std::size_t>& steps, Sink& sink) const;

 private:
  struct Region {
    odbstore::HistoryRegionInfo info;
    std::map<std::string, std::vector<float>> outputs;  // pairs of value and number
  };
  using Kind = std::pair<std::string, std::string>;  // title and set
  // Where the numbers of a row go.
  struct Target {
    std::array<int, 2> labels{};
    std::vector<std::vector<float>*> outputs;  // null for those that are no results
  };

  std::string setName(const PrintedTable& table) const;
  Region& regionOf(const PrintedTable& table, const DatValues& row);
  Target targetOf(const PrintedTable& table, const DatValues& row);

  const Deck& deck_;
  std::set<Kind> tooLarge_;
  std::map<std::pair<int, std::string>, Region> regions_;  // by step and name
  // By step, title, set and part: tables of a kind have the same rows in the same order in nearly every frame.
  std::map<std::tuple<int, std::string, std::string, bool>, std::vector<Target>> targets_;

  const PrintedTable* table_ = nullptr;
  std::vector<Target>* rows_ = nullptr;
  std::size_t row_ = 0;
  double value_ = 0.0;
};

}  // namespace importers::calculix
