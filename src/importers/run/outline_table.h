// An outline as text, for people.
#pragma once

#include <string>

#include "importers/run/outline.h"

namespace importers {

// Tables of text: the model, the sets, the frames of each step, the fields with the frames that have them, and what
// histories are made of. `file` begins the first line. Ends in a line end.
std::string outlineTable(const Outline& outline, const std::string& file);

}  // namespace importers
