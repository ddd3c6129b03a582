// What a run has printed (.dat), found without keeping its rows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "importers/calculix/dat/dat_formats.h"
#include "importers/calculix/dat/dat_reader.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/steps/frames.h"

namespace importers::calculix {

struct PrintedTable {
  std::size_t ordinal = 0;  // among all tables of the file, from 0
  DatTable head;            // with the set and time of the table above where it has none itself
  const DatFormat* format = nullptr;
  std::size_t rows = 0;              // of places, or of modes
  std::size_t width = 0;             // numbers of each row
  std::vector<std::size_t> columns;  // of the format, for each number of a row
  bool isOfSection = false;          // whether set and time are those of the table above
  std::vector<DatValues> kept;       // the rows of modes and sums, which are few
  bool hasGlobalRows = false;        // in the axes of the model
  bool hasLocalRows = false;         // in axes of the nodes or elements
  std::uint64_t fingerprint = 0;     // equal for equal rows
  bool isLeftOut = false;            // not understood: it makes neither fields nor histories

  // Which step and frame it belongs to, as found by placeTables().
  int step = 0;  // 0 for none
  std::optional<FrameNumber> frame;
  bool isImaginary = false;
  // What distinguishes it from others of its title and set: "CFN" for the normal forces between surfaces.
  std::string part;
};

// Something that the user should know about the file.
struct PrintedProblem {
  std::int64_t line = 0;  // 0 for the whole file
  std::string text;
  bool isLoss = true;  // whether something is left out or in doubt, which is an error with --strict
};

struct PrintedTables {
  std::vector<PrintedTable> tables;  // known ones in file order
  // Whether the file ends inside a line or a table; the last table is not among them then.
  bool isCutOff = false;
  std::int64_t lastLine = 0;
  std::vector<PrintedProblem> problems;
};

// Reads the whole file, which need not exist. Unknown tables and tables with rows that are not understood are left out
// and listed in `problems`. Throws ImportError if the file cannot be read.
PrintedTables readPrintedTables(const std::string& path, const Deck& deck);

// Reports the problems as warnings with their lines. With `isStrict` the first loss is an ImportError.
void reportProblems(const PrintedTables& printed, const std::string& path, bool isStrict, const WarningSink& warn);

}  // namespace importers::calculix
