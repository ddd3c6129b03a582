// The results of a CalculiX run: .frd, .dat, .sta and the deck .inp.
#pragma once

#include <memory>
#include <string>

#include "importers/calculix/frd/field_mapping.h"
#include "importers/input/diagnostics.h"
#include "importers/run/source.h"

namespace importers::calculix {

struct CalculixRun {
  std::string results;    // the .frd file
  std::string deck;       // the .inp file; empty for none
  std::string status;     // the .sta file, which need not exist
  std::string printed;    // the .dat file; empty for none
  bool isStrict = false;  // whether truncated files and unknown contents are errors
  bool withMass = true;   // whether steps have the mass of the deck's model
  StressAt stressAt = StressAt::nodes;
  // Printed tables of more nodes, elements or integration points become fields without histories.
  std::size_t historyLimit = 1000;
};

// Opens the result file. Throws ImportError if it cannot be read or is not a CalculiX result file. `warn` must live as
// long as the source.
std::unique_ptr<Source> openCalculix(const CalculixRun& run, const WarningSink& warn);

}  // namespace importers::calculix
