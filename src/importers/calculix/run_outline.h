// What a run's files hold, in the words that all importers share, and where each of their blocks goes. Decided from the
// arguments alone; no file is read.
//
// Of a deck with two steps, *STATIC and *STEADY STATE DYNAMICS, and of these blocks and one table
//
//    result file   0  DISP     step 1, increment 1
//                  1  STRESS   step 1, increment 1
//                  2  DISP     step 2, 10 Hz
//                  3  DISPI    step 2, 10 Hz
//    printed file  0  displacements (vx,vy,vz) for set TOP ...     step 1, increment 1
//
// come the outline and the plan
//
//    Step-1   fields S, U, U_PRINT            result 0 -> U, result 1 -> S, table 0 -> U_PRINT
//    Step-2   fields U, U_IM, U_PEAK          result 2 -> U, result 3 -> U_IM, results 2 and 3 -> U_PEAK
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "importers/calculix/contents.h"
#include "importers/calculix/deck/step_mass.h"
#include "importers/calculix/frd/complex_peaks.h"
#include "importers/run/outline.h"

namespace importers::calculix {

// Which rows of a block a field takes: those at nodes with *TRANSFORM may be in local axes.
enum class RowsAt { allNodes, nodesWithLocalAxes, otherNodes };

// A field that columns of a block become.
struct Target {
  const MappedField* field = nullptr;  // of the contents
  RowsId rows;
  RowsAt at = RowsAt::allNodes;
};

// Largest values over a cycle, made of a real block and of the imaginary one of the same frame that follows it.
struct PeakTarget {
  PeakField peak;
  RowsId rows;
  std::size_t real = 0;  // ordinals of the blocks
  std::size_t imaginary = 0;
};

struct Plan {
  std::map<std::size_t, std::vector<Target>> results;  // by the ordinal of the block in the result file
  std::map<std::size_t, std::vector<Target>> tables;   // by that of the table in the printed file
  std::vector<PeakTarget> peaks;
  std::map<int, std::size_t> steps;  // places in the outline, by number
};

// The outline of a run, and in `plan` what becomes of its blocks. Both refer to `contents`. `mass` is that of the
// deck's model, which printed sums replace where `withMass`.
Outline outlineOf(const Contents& contents, const Deck& deck, bool withMass, const std::optional<StepMass>& mass,
                  Plan& plan);

// Steps in which tensors of the result file mix local and global axes (GLOBAL=NO of *EL FILE and an orientation), a
// text for each: "in Step-1 S is in the local axes of its elements for the elements of A, ...".
std::vector<std::string> mixedAxes(const Contents& contents, const Deck& deck);

}  // namespace importers::calculix
