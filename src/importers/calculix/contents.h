// What a result file holds, found without reading its rows.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/field_mapping.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/selection.h"
#include "importers/diagnostics.h"
#include "odbstore/writer.h"

namespace importers::calculix {

// One result block with rows as it would be imported.
struct ContentsBlock {
  std::size_t ordinal = 0;  // among all result blocks of the file, from 0
  std::string block;
  int step = 0;
  int frame = 0;  // its place in the step, from 0
  odbstore::FrameInfo info;
  std::vector<MappedField> fields;  // those that are wanted
  std::size_t rows = 0;
};

struct Contents {
  std::size_t nodes = 0;
  std::size_t elements = 0;
  bool isBinary = false;
  bool isCutOff = false;
  std::vector<ContentsBlock> blocks;  // in file order
};

// What the block of stresses holds in the step of a block.
StressContent stressContentOf(const FrdResult& block, const Deck& deck);

// Passes through the whole file. Throws ImportError for a damaged one.
Contents readContents(const std::string& results, const std::string& status, const Deck& deck, const WarningSink& warn);

// Takes out what is not selected. Where a field, step or frame that is asked for is not there, or nothing is left, the
// ImportError lists what there is.
void select(Contents& contents, const Selection& selection, const std::string& results);

}  // namespace importers::calculix
