// The rows of ASCII blocks: lines of fixed columns.
#pragma once

#include <optional>

#include "importers/calculix/frd/frd_blocks.h"
#include "importers/calculix/frd/frd_lines.h"

namespace importers::calculix {

// Each reads everything after the header of its block, including its last line. `announced` is the count of that
// header. Rows that are not as many are an ImportError, but a result may have none, and elements are not counted:
// layered shells are several, announced as one.
void readTextNodes(FrdLines& lines, std::optional<std::size_t> announced, FrdNodes& nodes);
void readTextElements(FrdLines& lines, FrdElements& elements);
void readTextRows(FrdLines& lines, std::optional<std::size_t> announced, FrdResult& result);

// Counts the rows of a result without looking at them.
void skipTextRows(FrdLines& lines, std::optional<std::size_t> announced, FrdResult& result);

}  // namespace importers::calculix
