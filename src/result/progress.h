// What the extraction says of its progress.
#pragma once

#include "odbaccess/odb_api.h"

// Writes `what`, the name and a line end to standard output, as they are: programs read these lines. On a terminal
// control characters in the name are escaped, as it would obey them.
void sayProgress(const char* what, const odb_String& name);
