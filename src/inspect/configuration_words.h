// Words of a configuration that do something else than they look like.
#pragma once

#include "inspect/configuration.h"
#include "inspect/remark.h"

namespace inspect {

// In the order of the lines: words that are no keyword but look like one, with the nearest; words that contain a
// keyword and count for it; keywords in what looks like a comment; keywords before the line from which on they count; a
// percentage without a number, or that is not from 0 to 100; a missing start. Prose is left alone.
Remarks wordRemarks(const Configuration& configuration);

}  // namespace inspect
