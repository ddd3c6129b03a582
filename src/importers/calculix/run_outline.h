// What a run's files hold, in the words that all importers share, and where each of their blocks goes.
#pragma once

#include <map>
#include <vector>

#include "importers/calculix/complex_peaks.h"
#include "importers/calculix/contents.h"
#include "importers/calculix/step_mass.h"
#include "importers/run/outline.h"

namespace importers::calculix {

// A field that columns of a block become.
struct Target {
  const MappedField* field = nullptr;  // of the contents
  RowsId rows;
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

}  // namespace importers::calculix
