// Imports the results of a CalculiX run.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "importers/calculix/field_mapping.h"
#include "importers/calculix/selection.h"
#include "importers/diagnostics.h"
#include "odbstore/writer.h"

namespace importers::calculix {

struct ImportRequest {
  std::string results;  // the .frd file
  std::string deck;     // the .inp file; empty for none
  std::string status;   // the .sta file, which need not exist
  std::string printed;  // the .dat file; empty for none
  std::string output;   // the database to write
  odbstore::WriterOptions storage;
  bool isStrict = false;  // whether a result file that is cut off is an error
  bool withMass = true;   // whether steps have the mass of the deck's model
  Selection selection;
  StressAt stressAt = StressAt::nodes;
  // Printed tables of more nodes, elements or integration points become fields without histories.
  std::size_t historyLimit = 1000;
};

struct ImportSummary {
  int steps = 0;
  int frames = 0;
  int fields = 0;     // different names
  int histories = 0;  // outputs
  int sets = 0;
  // Where the results end that were imported of a file that is cut off, "step 2, time 0.5"; empty for a whole one.
  std::string cutOffBehind;
};

// Told block by block how many bytes of the files with results have been read; all of them while the database is
// completed.
using ProgressSink = std::function<void(std::uint64_t done, std::uint64_t all)>;

// Reads the result file block by block and writes the database, which appears under its name when it is complete.
// Throws ImportError for what cannot be read and odbstore::StoreError for what cannot be written. A result file that is
// cut off behind its model gives what is complete in it, and a warning. A selection that matches nothing is an
// ImportError that lists what there is.
ImportSummary importCalculix(const ImportRequest& request, const WarningSink& warn, const ProgressSink& progress = {});

// What such an import would take, as tables for a reader. Writes no file.
std::string listCalculix(const ImportRequest& request, const WarningSink& warn);

}  // namespace importers::calculix
