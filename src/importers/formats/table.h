// Which formats a program knows.
#pragma once

#include <vector>

#include "importers/formats/formats.h"

namespace importers {

// A row for each, in the order in which --formats lists them.
const std::vector<Format>& allFormats();

}  // namespace importers
