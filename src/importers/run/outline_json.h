// An outline as JSON, for other programs.
#pragma once

#include <string>

#include "importers/run/outline.h"

namespace importers {

// One object with the keys `file`, `nodes`, `elements`, `truncatedAfter`, and the lists `sets` (`name`, `of`,
// `members`) and `steps` (`name`, `number`, `description`, and the lists `frames`, `fields` and `histories`). Ends in a
// line end.
std::string outlineJson(const Outline& outline, const std::string& file);

}  // namespace importers
