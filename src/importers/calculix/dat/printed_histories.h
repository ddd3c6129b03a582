// Collects histories from printed tables until their steps are complete.
//
// Of these tables of two sets that share the node 7, printed at the time 0.5 of a step,
//
//    displacements (vx,vy,vz) for set TOP and time  0.5000000E+00       forces ... for set EDGE and time  0.5000000E+00
//           7  1.000000E+00  2.000000E+00  3.000000E+00                        7  4.000000E+00  5.000000E+00 ...
//           8  ...                                                      displacements ... for set EDGE ...
//    total force (fx,fy,fz) for set 7 and time  0.5000000E+00                  7  1.000000E+00  2.000000E+00 ...
//             -3.000000E+00 -8.000000E+00 -4.000000E+01
//
// come the regions and outputs
//
//    Node 7 of TOP    U1 (0.5, 1), U2, U3, RF1 (0.5, 4), ...     record U1_7; the second displacement is the same
//    Node 8 of TOP    U1, ...
//    Set 7            RF1 (0.5, -3), RF2, RF3                    record RF1_7-SET: RF1_7 is the node's
#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/deck/deck_set_names.h"
#include "importers/input/diagnostics.h"
#include "importers/run/sink.h"

namespace importers::calculix {

// A region for every node, element or integration point of printed sets, for every set of which sums are printed, for
// every surface with forces, and one for the whole model: modes, factors, energies of contact. A node or element in
// several tables has one region, named after the first of their sets. A sample is a pair: the value of the frame (time
// in the step, frequency, factor; for tables of modes the number of the mode) and the printed number. An output has one
// sample for each frame.
class PrintedHistories {
 public:
  // Tables with more than `limit` rows at the mesh, in any frame, make no histories; a warning with the line of the
  // first one names the set. `path` is that of the printed file.
  PrintedHistories(const std::string& path, const PrintedTables& printed, std::size_t limit, const Deck& deck,
                   const WarningSink& warn);

  // Whether rows of the table make histories.
  bool takes(const PrintedTable& table) const;
  // Rows added from now on belong to this table, for which takes() must be true; `value` is that of its frame.
  void start(const PrintedTable& table, double value);
  void add(const DatValues& row);

  // Delivers the histories of chosen steps; `steps` are their indices in the outline, by number. Record names are
  // unique: the label of a set that would cause a duplicate gets "-SET".
  void deliver(const std::map<int, std::size_t>& steps, Sink& sink) const;

 private:
  struct Output {
    std::vector<float> numbers;        // pairs of value and number
    std::optional<FrameNumber> frame;  // of the last one
  };
  struct Region {
    std::string name;
    odbstore::HistoryRegionInfo info;
    std::map<std::string, Output> outputs;
  };
  // Step, kind of place, node or element, integration point, set or surface of a sum.
  using Place = std::tuple<int, int, int, int, std::string>;
  using Kind = std::pair<std::string, std::string>;  // title and set
  // Where the numbers of a row go.
  struct Target {
    std::array<int, 2> labels{};
    bool isLocal = false;
    std::vector<Output*> outputs;  // null for numbers that are not results
  };

  std::string setName(const PrintedTable& table) const;
  Region& regionOf(const PrintedTable& table, const DatValues& row);
  Target targetOf(const PrintedTable& table, const DatValues& row);

  PrintedSetNames names_;
  std::set<Kind> tooLarge_;
  std::map<Place, Region> regions_;
  // By step, title, set and what tells tables of a kind apart: they have the same rows in the same order in nearly
  // every frame.
  std::map<std::tuple<int, std::string, std::string, std::string>, std::vector<Target>> targets_;

  const PrintedTable* table_ = nullptr;
  std::vector<Target>* rows_ = nullptr;
  std::size_t row_ = 0;
  double value_ = 0.0;
};

}  // namespace importers::calculix
