// Shows what a result file holds.
#pragma once

#include <string>

#include "importers/calculix/contents.h"

namespace importers::calculix {

// Tables of text for a reader: the model, the sets of the deck, the frames of each step, the fields with the frames
// that have them. Ends in a line end.
std::string contentsTable(const Contents& contents, const Deck& deck, const std::string& results);

}  // namespace importers::calculix
