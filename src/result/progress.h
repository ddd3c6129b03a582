// What the extraction says of its progress.
#pragma once

#include <string>

#include "odbaccess/odb_api.h"

// A text of the database as lines of progress on standard output show it: as it is, because programs read them. On a
// terminal control characters are escaped, as it would obey them.
std::string shownInProgress(const odb_String& text);
