// Writes the steps and frames that are imported.
#pragma once

#include <map>
#include <optional>

#include "importers/calculix/contents.h"
#include "importers/calculix/selection.h"
#include "importers/calculix/step_mass.h"
#include "odbstore/writer.h"

namespace importers::calculix {

struct WrittenSteps {
  std::map<int, odbstore::StepId> steps;
  std::map<FrameNumber, odbstore::FrameId> frames;
};

// The steps in the order of their numbers: those that have frames with selected fields, and those with printed tables;
// of each step the frames that have fields. `computed` is the mass of the deck's model, which printed sums replace if
// `withMass`.
WrittenSteps writeSteps(const Contents& contents, const Selection& selection, const Deck& deck, bool withMass,
                        const std::optional<StepMass>& computed, odbstore::Writer& writer);

}  // namespace importers::calculix
