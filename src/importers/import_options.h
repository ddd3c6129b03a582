// The command line of `kolvex import`.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/field_mapping.h"
#include "importers/run/choice.h"

namespace importers {

struct ImportOptions {
  std::string input;   // as given
  std::string output;  // empty: beside the results
  std::string deck;    // empty: beside the results
  bool withoutDeck = false;
  std::string printed;  // empty: beside the results
  bool withoutPrinted = false;
  calculix::StressAt stressAt = calculix::StressAt::nodes;
  std::size_t historyLimit = 1000;
  bool isStrict = false;
  bool withMass = true;
  bool compress = false;
  bool checksum = false;
  bool isList = false;  // show what would be imported, and write nothing
  Selection selection;

  // Set when there is nothing to run: print `message` (on standard error when the status is not 0) and exit.
  bool isDone = false;
  int status = 0;
  std::string message;
};

// Reads the arguments, the program's name not among them. Touches no file. Wrong usage has status 2.
ImportOptions parseImportOptions(std::vector<std::string> arguments);

// The files of a run, by name: "job", "job.", "job.frd" and "job.inp" mean the same.
struct JobFiles {
  std::string results;
  std::string deck;
  std::string status;
  std::string printed;
  std::string output;
};
JobFiles jobFiles(const ImportOptions& options);

}  // namespace importers
