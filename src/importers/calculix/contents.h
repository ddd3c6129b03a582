// What the files of a run hold, found without keeping rows.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/field_mapping.h"
#include "importers/calculix/frames.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/printed_tables.h"
#include "importers/calculix/selection.h"
#include "importers/diagnostics.h"

namespace importers::calculix {

// The files of a run that hold results. The last two need not exist.
struct RunFiles {
  std::string results;  // .frd
  std::string status;   // .sta
  std::string printed;  // .dat; empty for none
};

// One result block with rows, or one printed table that makes fields, as it would be imported.
struct ContentsBlock {
  bool isPrinted = false;
  std::size_t ordinal = 0;  // among all result blocks or tables of its file, from 0
  std::string block;
  FrameNumber frame = 0;
  int step = 0;
  int place = 0;                    // of the frame in the step, from 0
  std::vector<MappedField> fields;  // those that are wanted
  std::size_t rows = 0;
};

struct Contents {
  std::size_t nodes = 0;
  std::size_t elements = 0;
  bool isBinary = false;
  bool isCutOff = false;              // the result file
  std::vector<ContentsBlock> blocks;  // in file order, those of the result file first
  PrintedTables printed;              // every one with its place
  Frames frames;
};

// What the block of stresses holds in the step of a block.
StressContent stressContentOf(const FrdResult& block, const Deck& deck);

// Passes through all of the files. Throws ImportError for a damaged one.
Contents readContents(const RunFiles& files, StressAt stressAt, const Deck& deck, const WarningSink& warn);

// Takes out what is not selected. Where a field, step or frame that is asked for is not there, or nothing is left, the
// ImportError lists what there is.
void select(Contents& contents, const Selection& selection, const std::string& results);

}  // namespace importers::calculix
