// What a run's files hold, in the words that all importers share, and where each of their blocks goes.
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
