// Collects the histories that printed tables make, until their steps are complete.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/printed_tables.h"
#include "importers/diagnostics.h"
#include "odbstore/writer.h"

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
  // One row of it; `value` is that of its frame.
  void add(const PrintedTable& table, const DatValues& row, double value);

  // Writes the histories of those steps; returns how many.
  int write(odbstore::Writer& writer, const std::map<int, odbstore::StepId>& steps) const;

 private:
  struct Region {
    odbstore::HistoryRegionInfo info;
    std::map<std::string, std::vector<float>> outputs;  // pairs of value and number
  };
  using Kind = std::pair<std::string, std::string>;  // title and set

  std::string setName(const PrintedTable& table) const;
  Region& regionOf(const PrintedTable& table, const DatValues& row);

  const Deck& deck_;
  std::set<Kind> tooLarge_;
  std::map<std::pair<int, std::string>, Region> regions_;  // by step and name
};

}  // namespace importers::calculix
