// What a run has printed (.dat), found without keeping its rows.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "importers/calculix/dat_formats.h"
#include "importers/calculix/dat_reader.h"
#include "importers/calculix/frames.h"

namespace importers::calculix {

struct PrintedTable {
  std::size_t ordinal = 0;  // among all tables of the file, from 0
  DatTable head;            // with the set and time of the table above where it has none itself
  const DatFormat* format = nullptr;
  std::size_t rows = 0;
  std::size_t width = 0;        // numbers of its first row
  bool isOfSection = false;     // whether set and time are those of the table above
  std::vector<DatValues> kept;  // the rows of modes and sums, which are few

  // Which step and frame it belongs to, as found by placeTables().
  int step = 0;  // 0 for none
  std::optional<FrameNumber> frame;
  bool isImaginary = false;

  // What tells it from other tables of the frame.
  bool isSameKind(const PrintedTable& other) const {
    return format == other.format && head.title == other.head.title && head.set == other.head.set;
  }
};

struct PrintedTables {
  std::vector<PrintedTable> tables;  // known ones in file order
  // Whether the file ends inside a line; the last table is not among them then.
  bool isCutOff = false;
  std::int64_t lastLine = 0;
};

// Reads the whole file, which need not exist. Throws ImportError for one that cannot be read.
PrintedTables readPrintedTables(const std::string& path);

}  // namespace importers::calculix
