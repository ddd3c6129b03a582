// The rows of binary blocks: records without any text between them, little-endian. Only the count in the header of a
// block says where it ends.
#pragma once

#include <cstddef>

#include "importers/calculix/frd/frd_blocks.h"
#include "importers/calculix/frd/frd_lines.h"

namespace importers::calculix {

// Each reads the `count` records after the header of its block.

// A record is the label and three doubles.
void readBinaryNodes(FrdLines& lines, std::size_t count, FrdNodes& nodes);

// A record is label, type code, group, material and the nodes. More elements than announced follow until text begins: a
// layered shell is several elements, announced as one.
void readBinaryElements(FrdLines& lines, std::size_t count, FrdElements& elements);

// A record is the label and the numbers, floats or doubles by the result's format; doubles are rounded to floats. A
// result that is announced with rows may have none.
void readBinaryRows(FrdLines& lines, std::size_t count, FrdResult& result);
void skipBinaryRows(FrdLines& lines, std::size_t count, FrdResult& result);

}  // namespace importers::calculix
