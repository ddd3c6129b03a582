// What the files of a run hold, found without keeping rows.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/frd/field_mapping.h"
#include "importers/calculix/frd/frd_reader.h"
#include "importers/calculix/steps/frames.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// The files of a run that hold results. The last two need not exist.
struct RunFiles {
  std::string results;  // .frd; empty for none
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
  std::vector<MappedField> fields;
  std::size_t rows = 0;
};

struct Contents {
  std::vector<int> nodes;  // labels
  FrdElements mesh;
  bool isBinary = false;
  bool isCutOff = false;      // the result file
  std::int64_t lastLine = 0;  // of the result file
  // Blocks without rows, and the line of the first of each.
  std::map<std::string, std::int64_t> emptyBlocks;
  std::vector<ContentsBlock> blocks;  // in file order, those of the result file first
  PrintedTables printed;              // each with its step and frame
  Frames frames;
};

// What the block of stresses holds in the step of a block.
StressContent stressContentOf(const FrdResult& block, const Deck& deck);

// Scans all files. Throws ImportError for a damaged one, unless `leaveOut` accepts losing the result. Results whose
// ordinals are in `leftOut` are not among the contents.
Contents readContents(const RunFiles& files, StressAt stressAt, const Deck& deck, const LeaveOut& leaveOut,
                      const std::set<std::size_t>& leftOut, const WarningSink& warn);

}  // namespace importers::calculix
